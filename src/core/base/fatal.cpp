#include "core/base/fatal.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace lomir {

namespace {

std::function<void()>& workBeforeFatalStop()
{
    static std::function<void()> work;
    return work;
}

} // namespace

std::function<void()> setWorkBeforeFatalStop(std::function<void()> work)
{
    return std::exchange(workBeforeFatalStop(), std::move(work));
}

void fatalError(std::string_view message, SourcePosition where)
{
    std::fprintf(stderr, "Fatal error: %.*s (%s:%d)\n", int(message.size()), message.data(),
                 where.file, where.line);
    std::fflush(stderr);
    // Taking the work out first means a stop during the work finds none and ends here.
    if (const std::function<void()> work = std::exchange(workBeforeFatalStop(), {})) {
        try {
            work();
        } catch (...) {
            // The program ends anyway; whatever the work managed to write is kept.
        }
    }
    std::abort();
}

qint64 checkedInt64(double value, SourcePosition where)
{
    // 2^63 is exactly representable; every double below it converts without overflow.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(value) || value >= limit || value < -limit)
        fatalError("Double value cannot be converted to Int64", where);
    return static_cast<qint64>(value);
}

qint64 checkedAdd(qint64 a, qint64 b, SourcePosition where)
{
    qint64 sum = 0;
    if (__builtin_add_overflow(a, b, &sum))
        fatalError("Arithmetic overflow", where);
    return sum;
}

qint64 checkedMultiply(qint64 a, qint64 b, SourcePosition where)
{
    qint64 product = 0;
    if (__builtin_mul_overflow(a, b, &product))
        fatalError("Arithmetic overflow", where);
    return product;
}

} // namespace lomir
