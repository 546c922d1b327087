#pragma once

namespace VnTest
{

/// Rounds of a long random test: all of them where the compiler optimises, an eighth under a sanitizer, which costs
/// that much time.
constexpr int steps(int all)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    return all / 8;
#else
    return all;
#endif
}

}  // namespace VnTest
