#pragma once

#include <QString>
#include <utility>
#include <variant>

namespace lomir {

// An error the user can act on: a whole sentence, plus the domain and code that
// callers and tests tell errors apart by.
struct Error
{
    QString domain;
    int code = 0;
    QString message;

    bool operator==(const Error&) const = default;
};

// Either a value or the Error that kept it from being made.
template <typename T> class [[nodiscard]] Result
{
public:
    Result(T value) : m_state(std::move(value)) {}
    Result(Error error) : m_state(std::move(error)) {}

    bool ok() const { return std::holds_alternative<T>(m_state); }
    explicit operator bool() const { return ok(); }

    const T& value() const& { return std::get<T>(m_state); }
    T& value() & { return std::get<T>(m_state); }
    T&& value() && { return std::get<T>(std::move(m_state)); }
    const T& operator*() const& { return value(); }
    T& operator*() & { return value(); }
    const T* operator->() const { return &value(); }
    T* operator->() { return &value(); }

    const Error& error() const { return std::get<Error>(m_state); }

private:
    std::variant<T, Error> m_state;
};

// A Result for operations that give nothing back but may fail.
struct Done
{
    bool operator==(const Done&) const = default;
};
using Status = Result<Done>;

} // namespace lomir

// Hands a failed Result (or Status) up as the enclosing function's own: evaluates the
// expression once and, when it holds an error, returns that error. A readable stand-in for
// the two lines every step of a reader would otherwise repeat.
#define LOMIR_RETURN_IF_ERROR(expression)                                                          \
    do {                                                                                           \
        if (auto&& lomirResult_ = (expression); !lomirResult_)                                     \
            return lomirResult_.error();                                                           \
    } while (false)
