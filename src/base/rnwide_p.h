#pragma once

// Where a processor's wider registers are taken. Not on Windows, whose stack the compiler doesn't align for them.
#if defined(__x86_64__) && !defined(_WIN32)
#    define VN_RN_HAS_WIDE 1
#endif

namespace Vn
{

/// Bulk loops that are compiled twice: for the baseline of x86-64, and for AVX2, which is taken where the processor has
/// it. AVX2 brings no fused multiplication, so that both give the same bits. Private to the library.
namespace RnWide
{

#ifdef VN_RN_HAS_WIDE

template <auto loop, class... Arguments>
[[gnu::target("avx2"), gnu::flatten, gnu::noinline]] void runWide(Arguments... arguments)
{
    loop(arguments...);
}

/// Calls `loop(arguments...)` by one of the two. What it calls is inlined; arguments are values, so that no store of the
/// loop can change them.
template <auto loop, class... Arguments>
void run(Arguments... arguments)
{
    static const bool isWide = [] {
        __builtin_cpu_init();  // draws may come before the constructor that would do it
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
