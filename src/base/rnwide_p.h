// Private to rnbins_p.h, rndirection_p.h, rngaussianrng.imp and rnlecuyeruniformrng.imp.
#pragma once

// Not on Windows: the compiler does not align the stack there for 32-byte registers. A program of the tests leaves the wide form
// out (VN_RN_PLAIN), as a processor that has it would never run the other one.
#if defined(__x86_64__) && !defined(_WIN32) && !defined(VN_RN_PLAIN)
#    define VN_RN_HAS_WIDE 1
#endif

namespace Vn
{

/// Bulk loops that are compiled twice, for the baseline of x86-64 and for AVX2. The processor
/// chooses at run time.
///
///     RnWide::run<loop>(n, samples);    // instead of loop(n, samples)
///
/// Both forms give the same bits: AVX2 has no fused multiply-add, and no loop reorders a sum. Other
/// processors than x86-64, and Windows, have the baseline's form alone.
/// Tests: the samplers' in basetest, in the form that the processor chooses, and again in plainlooptest, in the baseline's.
namespace RnWide
{

#ifdef VN_RN_HAS_WIDE

/// `flatten` inlines all that the loop calls, since code outside this function is not compiled for
/// AVX2. `noinline` keeps its instructions out of callers, which run on any processor.
template <auto loop, class... Arguments>
[[gnu::target("avx2"), gnu::flatten, gnu::noinline]] void runWide(Arguments... arguments)
{
    loop(arguments...);
}

/// Calls `loop(arguments...)` in the wider form that the processor has. Arguments are passed by
/// value, so that the compiler knows that no store of the loop changes them.
template <auto loop, class... Arguments>
void run(Arguments... arguments)
{
    static const bool isWide = [] {
        __builtin_cpu_init();  // a static object's constructor may draw before the runtime has done this
        return __builtin_cpu_supports("avx2") != 0;
    }();
    if (isWide)
        runWide<loop>(arguments...);
    else
        loop(arguments...);
}

#else

template <auto loop, class... Arguments>
void run(Arguments... arguments)
{
    loop(arguments...);
}

#endif

}  // namespace RnWide
}  // namespace Vn
