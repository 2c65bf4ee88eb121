#include "core/aes128.h"

#include <openssl/evp.h>

#include <cstring>
#include <memory>

namespace {

constexpr int kKeyBytes = 16;
constexpr int kBlockBytes = 16;

struct CipherContextDeleter {
    void operator()(EVP_CIPHER_CTX *ctx) const { EVP_CIPHER_CTX_free(ctx); }
};

std::optional<QByteArray> run(const QByteArray &data, const QByteArray &keyText, bool encrypt)
{
    // The key text in a zeroed buffer of 17 bytes (room for a terminating
    // zero), of which 16 are used.
    unsigned char key[kKeyBytes + 1];
    std::memset(key, 0, sizeof key);
    std::memcpy(key, keyText.constData(), size_t(std::min<qsizetype>(keyText.size(), kKeyBytes)));

    std::unique_ptr<EVP_CIPHER_CTX, CipherContextDeleter> ctx(EVP_CIPHER_CTX_new());
    if (!ctx || EVP_CipherInit_ex(ctx.get(), EVP_aes_128_ecb(), nullptr, key, nullptr, encrypt ? 1 : 0) != 1)
        return std::nullopt;
    EVP_CIPHER_CTX_set_padding(ctx.get(), 1); // PKCS#7
    QByteArray out(data.size() + kBlockBytes, Qt::Uninitialized);
    int written = 0;
    int last = 0;
    auto *dst = reinterpret_cast<unsigned char *>(out.data());
    if (EVP_CipherUpdate(ctx.get(), dst, &written, reinterpret_cast<const unsigned char *>(data.constData()),
                         int(data.size())) != 1)
        return std::nullopt;
    if (EVP_CipherFinal_ex(ctx.get(), dst + written, &last) != 1)
        return std::nullopt;
    out.truncate(written + last);
    return out;
}

} // namespace

std::optional<QByteArray> AES128EncryptedDataWithKey(const QByteArray &data, const QByteArray &key)
{
    return run(data, key, true);
}

std::optional<QByteArray> AES128DecryptedDataWithKey(const QByteArray &data, const QByteArray &key)
{
    if (data.isEmpty() || data.size() % kBlockBytes != 0)
        return std::nullopt;
    return run(data, key, false);
}
