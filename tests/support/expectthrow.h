#pragma once

#include <base/exbase.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace VnTest
{

/// Expects `call` to throw exactly `Exception`, caught by its concrete class, as an ExBase and as `Standard`, with
/// `reason` as the message of both. `reason` null: the message isn't looked at.
template <class Exception, class Standard, class Call>
void expectThrow(Call const& call, char const* reason)
{
    bool isCaught = false;
    try {
        call();
    } catch (Standard const& standard) {
        isCaught = true;
        EXPECT_EQ(typeid(standard), typeid(Exception));
        auto const* const base = dynamic_cast<Vn::ExBase const*>(&standard);
        ASSERT_NE(base, nullptr) << "no Vn::ExBase";
        EXPECT_STREQ(standard.what(), base->getReason());
        EXPECT_GT(base->getLineNo(), 0);
        EXPECT_EQ(std::string(base->getFileName()).compare(0, 9, "src/base/"), 0) << base->getFileName();
        if (reason != nullptr) {
            EXPECT_STREQ(base->getReason(), reason);
        }
    }
    EXPECT_TRUE(isCaught) << "nothing of that standard class was thrown";

    try {
        call();
        ADD_FAILURE() << "nothing thrown at the second call";
    } catch (Vn::ExBase const& base) {
        EXPECT_EQ(typeid(base), typeid(Exception));
    }
}

}  // namespace VnTest
