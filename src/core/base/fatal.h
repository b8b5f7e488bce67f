#pragma once

#include <QtGlobal>
#include <functional>
#include <string_view>

namespace lomir {

// Where in the source a stop was called from. Filled in from the caller's position by
// the compiler, as a default argument.
struct SourcePosition
{
    const char* file = __builtin_FILE();
    int line = __builtin_LINE();
};

// Stops the program at once. Used only for programming errors that the application
// deliberately does not recover from (a label of zero copies reaching the grid, an
// integer overflow in page arithmetic, a property read before it was set); never for
// user errors.
[[noreturn]] void fatalError(std::string_view message, SourcePosition where = {});

// Work to do after a stop is reported and before the program ends: the application
// writes every document with unsaved changes to its recovery folder. Runs at most once;
// a stop inside the work ends the program at once. Returns the work it replaces, so
// that whoever set it can put the previous one back.
std::function<void()> setWorkBeforeFatalStop(std::function<void()> work);

// Converts a floating-point quotient to a 64-bit integer, truncating toward zero, and
// stops the program when the value is not finite or does not fit.
qint64 checkedInt64(double value, SourcePosition where = {});

// Integer arithmetic that stops the program on overflow instead of wrapping.
qint64 checkedAdd(qint64 a, qint64 b, SourcePosition where = {});
qint64 checkedMultiply(qint64 a, qint64 b, SourcePosition where = {});

} // namespace lomir
