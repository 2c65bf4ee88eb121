#pragma once

#include <QByteArray>

#include <optional>

// AES-128 in ECB mode with PKCS#7 padding, as the settings and services
// files use it. The key is a text of the program: its bytes are copied into
// a zeroed buffer of 17 bytes, of which the first 16 are the key, so a
// shorter text is padded with zeros and a longer one cut. There is no
// initialisation vector.
//
// ECB is no protection against a determined reader: the files are kept
// from casual eyes and bound to this program, nothing more. Secrets go in
// only for the user's own export.

// AES128EncryptedDataWithKey:. nullopt only when the cipher cannot run.
std::optional<QByteArray> AES128EncryptedDataWithKey(const QByteArray &data, const QByteArray &key);
// AES128DecryptedDataWithKey:. nullopt when the data is not a whole number
// of blocks or the padding is wrong (another key, or not such a file).
std::optional<QByteArray> AES128DecryptedDataWithKey(const QByteArray &data, const QByteArray &key);
