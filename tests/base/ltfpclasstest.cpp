#include <base/ltfpclass.h>

#include <gtest/gtest.h>

#include <limits>

using Vn::LtFPClass;

namespace
{
template <class Float>
struct Row
{
    char const* what;
    Float value;
    bool isFinite, isNaN, isPositiveInfinity, isNegativeInfinity;
};

template <class Float>
void expectClasses()
{
    using Limits = std::numeric_limits<Float>;
    Row<Float> const table[] = {
        {"zero", Float(0), true, false, false, false},
        {"minus zero", -Float(0), true, false, false, false},
        {"one", Float(1), true, false, false, false},
        {"denormal", Limits::denorm_min(), true, false, false, false},
        {"largest", Limits::max(), true, false, false, false},
        {"lowest", Limits::lowest(), true, false, false, false},
        {"infinity", Limits::infinity(), false, false, true, false},
        {"minus infinity", -Limits::infinity(), false, false, false, true},
        {"not-a-number", Limits::quiet_NaN(), false, true, false, false},
        {"minus not-a-number", -Limits::quiet_NaN(), false, true, false, false},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(LtFPClass::isFinite(row.value), row.isFinite);
        EXPECT_EQ(LtFPClass::isNaN(row.value), row.isNaN);
        EXPECT_EQ(LtFPClass::isInfinity(row.value), row.isPositiveInfinity || row.isNegativeInfinity);
        EXPECT_EQ(LtFPClass::isPositiveInfinity(row.value), row.isPositiveInfinity);
        EXPECT_EQ(LtFPClass::isNegativeInfinity(row.value), row.isNegativeInfinity);
    }
}
}  // namespace

TEST(LtFPClass, putsEveryKindOfFloatIntoItsClass)
{
    expectClasses<float>();
}

TEST(LtFPClass, putsEveryKindOfDoubleIntoItsClass)
{
    expectClasses<double>();
}
