#pragma once

#include <QtGlobal>
#include <source_location>
#include <string_view>

namespace lomir {

// Stops the program at once. Used only for programming errors that the application
// deliberately does not recover from (a label of zero copies reaching the grid, an
// integer overflow in page arithmetic, a refused initialiser); never for user errors.
[[noreturn]] void fatalError(std::string_view message,
                             std::source_location where = std::source_location::current());

// Converts a floating-point quotient to a 64-bit integer, truncating toward zero, and
// stops the program when the value is not finite or does not fit.
qint64 checkedInt64(double value, std::source_location where = std::source_location::current());

// Integer arithmetic that stops the program on overflow instead of wrapping.
qint64 checkedAdd(qint64 a, qint64 b, std::source_location where = std::source_location::current());
qint64 checkedMultiply(qint64 a, qint64 b,
                       std::source_location where = std::source_location::current());

} // namespace lomir
