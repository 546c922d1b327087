// What makes plainlooptest run the plain loops: see CMakeLists.txt. Its other sources are the samplers' own tests.
#include <base/rnlecuyeruniformrng.h>
#include <base/rnwide_p.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <typeinfo>

using namespace Vn;

TEST(PlainLoops, samplersAreThoseOfThisProgramAndHaveNoWideForm)
{
#ifdef VN_RN_HAS_WIDE
    FAIL() << "compiled with the wide form";
#endif
    // The sampler's virtual functions are where its table is.
    RnLecuyerUniformRng<float> sampler;
    void const* const table = *reinterpret_cast<void const* const*>(&sampler);
    ::Dl_info ofTable = {};
    ::Dl_info ofProgram = {};
    ASSERT_NE(::dladdr(table, &ofTable), 0);
    ASSERT_NE(::dladdr(reinterpret_cast<void const*>(
                           &typeid(PlainLoops_samplersAreThoseOfThisProgramAndHaveNoWideForm_Test)),
                       &ofProgram),
              0);
    EXPECT_EQ(ofTable.dli_fbase, ofProgram.dli_fbase);
}
