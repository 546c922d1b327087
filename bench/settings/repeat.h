#pragma once

/// REPEAT_COUNTED(M): M(x0), M(x1), ... once for each setting of the program; SETTINGS is 0 or 1000.
#define REPEAT_TEN(M, P) M(P##0) M(P##1) M(P##2) M(P##3) M(P##4) M(P##5) M(P##6) M(P##7) M(P##8) M(P##9)
#define REPEAT_HUNDRED(M, P) \
    REPEAT_TEN(M, P##0)      \
    REPEAT_TEN(M, P##1)      \
    REPEAT_TEN(M, P##2)      \
    REPEAT_TEN(M, P##3)      \
    REPEAT_TEN(M, P##4)      \
    REPEAT_TEN(M, P##5) REPEAT_TEN(M, P##6) REPEAT_TEN(M, P##7) REPEAT_TEN(M, P##8) REPEAT_TEN(M, P##9)
#define REPEAT_THOUSAND(M, P) \
    REPEAT_HUNDRED(M, P##0)   \
    REPEAT_HUNDRED(M, P##1)   \
    REPEAT_HUNDRED(M, P##2)   \
    REPEAT_HUNDRED(M, P##3)   \
    REPEAT_HUNDRED(M, P##4)   \
    REPEAT_HUNDRED(M, P##5)   \
    REPEAT_HUNDRED(M, P##6) REPEAT_HUNDRED(M, P##7) REPEAT_HUNDRED(M, P##8) REPEAT_HUNDRED(M, P##9)

#if SETTINGS == 1000
#    define REPEAT_COUNTED(M) REPEAT_THOUSAND(M, bench_setting_)
#else
#    define REPEAT_COUNTED(M)
#endif
