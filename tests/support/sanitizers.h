#pragma once

// Whether this build runs under AddressSanitizer, whose shadow memory and quarantine
// count as the program's own: tests skip memory measurements and address-space limits
// there.

namespace lomir::testing {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool kAddressSanitizer = true;
#else
inline constexpr bool kAddressSanitizer = false;
#endif
#else
inline constexpr bool kAddressSanitizer = false;
#endif

} // namespace lomir::testing
