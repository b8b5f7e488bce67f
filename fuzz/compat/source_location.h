// std::source_location for clang before 15, for the fuzz build only.
//
// Debian 12's clang 14 compiles against libstdc++ 12, whose <source_location> needs the
// builtin __builtin_source_location (new in clang 15) and otherwise declares nothing, so
// src/base/fatal.h does not compile. The fuzz build force-includes this header when the
// compiler is an older clang; it supplies the class from the builtins clang 14 does have,
// which take the caller's position in default arguments exactly as the standard class does.
// Normal builds never see it.
#pragma once

#include <version>

#if defined(__clang__) && !defined(__cpp_lib_source_location)

#include <cstdint>
#include <source_location>

namespace std {

struct source_location
{
    static constexpr source_location current(const char* file = __builtin_FILE(),
                                             const char* function = __builtin_FUNCTION(),
                                             uint_least32_t line = __builtin_LINE(),
                                             uint_least32_t column = __builtin_COLUMN()) noexcept
    {
        source_location where;
        where.m_file = file;
        where.m_function = function;
        where.m_line = line;
        where.m_column = column;
        return where;
    }

    constexpr source_location() noexcept = default;

    constexpr uint_least32_t line() const noexcept { return m_line; }
    constexpr uint_least32_t column() const noexcept { return m_column; }
    constexpr const char* file_name() const noexcept { return m_file; }
    constexpr const char* function_name() const noexcept { return m_function; }

private:
    const char* m_file = "";
    const char* m_function = "";
    uint_least32_t m_line = 0;
    uint_least32_t m_column = 0;
};

} // namespace std

#endif
