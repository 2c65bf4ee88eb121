#include "core/date_uuid.h"

#include <atomic>
#include <chrono>

qint64 nowDateUUID()
{
    static std::atomic<qint64> last{0};
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(
                            std::chrono::system_clock::now().time_since_epoch())
                            .count();
    // Seconds times 10000 is microseconds divided by 100, rounded up.
    const qint64 now = (qint64(micros) + 99) / 100;
    qint64 previous = last.load();
    qint64 next = now;
    do {
        next = now > previous ? now : previous + 1;
    } while (!last.compare_exchange_weak(previous, next));
    return next;
}
