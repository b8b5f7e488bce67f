#pragma once

namespace lomir {

// What the review prompt hands the user over to, set here and nowhere else.
// The page where users rate Lomir; "Yes" on the question opens it in the browser.
inline constexpr char kRatingPageUrl[] = "https://brenvik.com/lomir/rate";
// The one recipient of the feedback e-mail.
inline constexpr char kSupportEmailAddress[] = "support@brenvik.com";

// The versions the feedback e-mail names and the answered prompt stores: the release
// ("0.1.0") and the build number (CMake's LOMIR_BUILD_VERSION).
inline constexpr char kShortVersion[] = LOMIR_VERSION;
inline constexpr char kBuildVersion[] = LOMIR_BUILD_VERSION;

} // namespace lomir
