#include <base/exbadexception.h>
#include <base/exbase.h>
#include <base/exinternalerror.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace
{
/// The smallest exception, with the protected operations in reach.
class Probe : public Vn::ExBase
{
public:
    explicit Probe(char const* file = "probe.cpp", int line = 7) : ExBase(file, line) {}
    using ExBase::setReason;
    ExBase* clone() const override { return new Probe(*this); }
};

std::string bracketedLine(Vn::ExBase const& exception)
{
    return std::string("[Exception Type = ") + typeid(exception).name() + ", File = " + exception.getFileName() +
           ", Line=" + std::to_string(exception.getLineNo()) + "]\n";
}

std::string filled(std::size_t length)
{
    return std::string(length, 'x');
}
}  // namespace

TEST(ExBase, holdsFileAndLineOfTheThrow)
{
    const Probe probe("some/file", -12);
    EXPECT_STREQ(probe.getFileName(), "some/file");
    EXPECT_EQ(probe.getLineNo(), -12);
    EXPECT_STREQ(probe.getReason(), "");
}

TEST(ExBase, nullFileLeavesTheFileNameEmpty)
{
    EXPECT_STREQ(Probe(nullptr).getFileName(), "");
}

TEST(ExBase, fileNameIsCutTo127Characters)
{
    const struct
    {
        char const* what;
        std::size_t given;
        std::size_t kept;
    } table[] = {
        {"empty", 0, 0},         {"one below", 126, 126}, {"the limit", 127, 127},
        {"one above", 128, 127}, {"long", 9999, 127},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Probe(filled(row.given).c_str()).getFileName(), filled(row.kept));
    }
}

TEST(ExBase, setReasonAppends)
{
    Probe probe;
    probe.setReason("a");
    probe.setReason("b");
    EXPECT_STREQ(probe.getReason(), "ab");
}

TEST(ExBase, setReasonIgnoresNull)
{
    Probe probe;
    probe.setReason("kept");
    probe.setReason(nullptr);
    EXPECT_STREQ(probe.getReason(), "kept");
}

TEST(ExBase, reasonTakesAsMuchAsFits)
{
    const struct
    {
        char const* what;
        std::size_t first, second, kept;
    } table[] = {
        {"both fit", 1000, 22, 1022},          {"both just fit", 1000, 23, 1023},
        {"the second is cut", 1000, 24, 1023}, {"the first is full", 1023, 1, 1023},
        {"the first is cut", 1024, 0, 1023},   {"both long", 5000, 5000, 1023},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.what);
        Probe probe;
        probe.setReason(filled(row.first).c_str());
        probe.setReason(filled(row.second).c_str());
        EXPECT_EQ(probe.getReason(), filled(row.kept));
    }
}

TEST(ExBase, detailedReasonIsTheBracketedLineAndTheReason)
{
    Probe probe("dir/file.cpp", 42);
    probe.setReason("It went wrong.");
    EXPECT_EQ(probe.getDetailedReason(), bracketedLine(probe) + "It went wrong.");
    EXPECT_NE(std::string(probe.getDetailedReason()).find(", File = dir/file.cpp, Line=42]\n"), std::string::npos);
}

TEST(ExBase, detailedReasonIsMadeOnce)
{
    Probe probe;
    probe.setReason("first");
    const std::string made = probe.getDetailedReason();
    probe.setReason(" second");
    EXPECT_EQ(probe.getDetailedReason(), made);
    EXPECT_STREQ(probe.getReason(), "first second");
}

TEST(ExBase, detailedReasonOfAFullReasonHas1023Characters)
{
    Probe probe;
    probe.setReason(filled(1023).c_str());
    const std::string detailed = probe.getDetailedReason();
    EXPECT_EQ(detailed.size(), 1023u);
    EXPECT_EQ(detailed, (bracketedLine(probe) + filled(1023)).substr(0, 1023));
}

TEST(ExBase, detailedReasonIsCutAtEachSideOfTheLimit)
{
    const std::size_t room = 1023 - bracketedLine(Probe()).size();
    for (std::size_t length : {room - 1, room, room + 1}) {
        SCOPED_TRACE(length);
        Probe probe;
        probe.setReason(filled(length).c_str());
        EXPECT_EQ(probe.getDetailedReason(), bracketedLine(probe) + filled(std::min(length, room)));
    }
}

TEST(ExBase, copyTakesTheDetailedReasonAlong)
{
    Probe original;
    original.setReason("before");
    const std::string cached = original.getDetailedReason();
    original.setReason(" after");
    const Probe copy(original);
    EXPECT_STREQ(copy.getReason(), "before after");
    EXPECT_EQ(copy.getDetailedReason(), cached);
    EXPECT_STREQ(copy.getFileName(), "probe.cpp");
    EXPECT_EQ(copy.getLineNo(), 7);
}

TEST(ExBase, assignmentKeepsTheDetailedReasonOfTheTarget)
{
    Probe source("source.cpp", 2);
    source.setReason("source");
    source.getDetailedReason();
    Probe target("target.cpp", 1);
    target.setReason("target");
    const std::string cached = target.getDetailedReason();
    target = source;
    EXPECT_STREQ(target.getReason(), "source");
    EXPECT_STREQ(target.getFileName(), "source.cpp");
    EXPECT_EQ(target.getLineNo(), 2);
    EXPECT_EQ(target.getDetailedReason(), cached);
}

TEST(ExBase, assignmentLeavesAnEmptyDetailedReasonToBeMade)
{
    Probe source("source.cpp", 2);
    source.setReason("source");
    source.getDetailedReason();
    source.setReason(" more");
    Probe target;
    target = source;
    EXPECT_EQ(target.getDetailedReason(), bracketedLine(source) + "source more");
}

TEST(ExBase, selfAssignmentChangesNothing)
{
    Probe probe;
    probe.setReason("kept");
    Probe const& same = probe;
    EXPECT_EQ(&(probe.ExBase::operator=(same)), &probe);
    EXPECT_STREQ(probe.getReason(), "kept");
    static_assert(std::is_same_v<decltype(probe.ExBase::operator=(same)), Vn::ExBase const&>);
}

TEST(ExBase, cloneReportsTheConcreteType)
{
    std::unique_ptr<Vn::ExBase> clone;
    try {
        throw Vn::ExInternalError("file.cpp", 3, "reason");
    } catch (Vn::ExBase const& caught) {
        clone.reset(caught.clone());
    }
    Vn::ExBase const& copied = *clone;
    EXPECT_EQ(typeid(copied), typeid(Vn::ExInternalError));
    EXPECT_STREQ(clone->getReason(), "reason");
    EXPECT_EQ(clone->getDetailedReason(), std::string("[Exception Type = ") + typeid(Vn::ExInternalError).name() +
                                              ", File = file.cpp, Line=3]\nreason");
}

TEST(ExBase, isALittleOverTwoKilobytes)
{
    EXPECT_GE(sizeof(Vn::ExBase), 1024u + 1024u + 128u + 4u);
    EXPECT_LE(sizeof(Vn::ExBase), 2304u);
}

TEST(ExInternalError, nullReasonLeavesTheMessageEmpty)
{
    const Vn::ExInternalError error("file.cpp", 9, nullptr);
    EXPECT_STREQ(error.what(), "");
    EXPECT_STREQ(error.getReason(), "");
    EXPECT_EQ(error.getDetailedReason(), bracketedLine(error));
}

TEST(ExInternalError, isCaughtThroughBothBases)
{
    VnTest::expectThrow<Vn::ExInternalError, std::runtime_error>(
        [] { throw Vn::ExInternalError("src/base/x", 1, "text"); }, "text");
}

TEST(ExInternalError, standardPartIsEmpty)
{
    const Vn::ExInternalError error("file.cpp", 9, "text");
    EXPECT_STREQ(static_cast<std::runtime_error const&>(error).std::runtime_error::what(), "");
}

TEST(ExInternalError, copiesAndMovesAreMadeMemberByMember)
{
    Vn::ExInternalError original("file.cpp", 1, "text");
    original.getDetailedReason();
    Vn::ExInternalError moved(std::move(original));
    EXPECT_STREQ(moved.what(), "text");
    Vn::ExInternalError assigned("other.cpp", 2, "other");
    const std::string cached = assigned.getDetailedReason();
    assigned = moved;
    EXPECT_STREQ(assigned.what(), "text");
    EXPECT_EQ(assigned.getDetailedReason(), cached);
    assigned = Vn::ExInternalError("third.cpp", 3, "third");
    EXPECT_STREQ(assigned.what(), "third");
    EXPECT_EQ(assigned.getLineNo(), 3);
}

TEST(ExBadException, isCaughtThroughBothBases)
{
    VnTest::expectThrow<Vn::ExBadException, std::bad_exception>([] { throw Vn::ExBadException("src/base/x", 1); },
                                                                "Invalid exception thrown.");
}

TEST(ExBadException, standardPartHasTheStandardText)
{
    const Vn::ExBadException error("file.cpp", 1);
    EXPECT_NE(
        std::string(static_cast<std::bad_exception const&>(error).std::bad_exception::what()).find("bad_exception"),
        std::string::npos);
}
