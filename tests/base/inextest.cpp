#include <base/inex.h>
#include <base/inpackages.h>
#include <base/insingletonex.h>

#include "expectthrow.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>

using Vn::InEx;
using VnTest::expectThrow;

namespace
{
constexpr char file[] = "src/base/x";
}

TEST(InEx, constantMessages)
{
    expectThrow<InEx::ExDependencyCycle, std::logic_error>([] { throw InEx::ExDependencyCycle(file, 1); },
                                                           "Init dependencies contain cycle(s)");
    expectThrow<InEx::ExRegAfterInit, std::runtime_error>([] { throw InEx::ExRegAfterInit(file, 1); },
                                                          "Package registered after initialize().");
    expectThrow<InEx::ExReinitWithoutGuard, std::runtime_error>(
        [] { throw InEx::ExReinitWithoutGuard(file, 1); }, "Reinitialize without using the reinitialize guard.");
    expectThrow<InEx::ExDoubleInit, std::runtime_error>([] { throw InEx::ExDoubleInit(file, 1); },
                                                        "Multiple calls to initialize().");
    expectThrow<InEx::ExFinaliseBeforeInit, std::runtime_error>([] { throw InEx::ExFinaliseBeforeInit(file, 1); },
                                                                "Call to finalize() before initialize().");
    expectThrow<InEx::ExDoubleFinalise, std::runtime_error>([] { throw InEx::ExDoubleFinalise(file, 1); },
                                                            "Multiple calls to finalize().");
}

namespace
{
/// Checks the message for a name below, at and above the cap of 256 characters, and for null.
template <class Exception, class Standard>
void expectMessage(std::string const& before, std::string const& behind)
{
    for (std::size_t length : {0u, 3u, 255u, 256u, 257u, 3000u}) {
        SCOPED_TRACE(length);
        const std::string name(length, 'n');
        const std::string expected = before + name.substr(0, 256) + behind;
        expectThrow<Exception, Standard>([&] { throw Exception(file, 1, name.c_str()); }, expected.c_str());
    }
    expectThrow<Exception, Standard>([] { throw Exception(file, 1, nullptr); }, (before + behind).c_str());
}
}  // namespace

TEST(InEx, messagesWithAName)
{
    expectMessage<InEx::ExPackageNotRegistered, std::runtime_error>("Init Package not registered: '", "'.");
    expectMessage<InEx::ExPackageInitError, std::runtime_error>("Init error in package: '", "'.");
    expectMessage<InEx::ExHandleAlreadyInUse, std::runtime_error>(
        "Trying to register an object with an already used handle: '", "'.");
    expectMessage<InEx::ExUninitializedObject, std::logic_error>(
        "Trying to access an object that is not fully initialized: '", "'.");
    expectMessage<InEx::ExInvalidObject, std::logic_error>(
        "Trying to access an object that has an invalid value: '", "'.");
    expectMessage<InEx::ExContextAliasAlreadyDefined, std::logic_error>(
        "Trying to re-create an already existing Context Alias: '", "'.");
    expectMessage<InEx::ExVariableAlreadyInitialized, std::logic_error>(
        "Trying to override an InVariable that is already initialized: '", "'.");
}

TEST(InEx, aMissingPackageIsNamedByItsTag)
{
    const auto tagOf = [](char const* typeName) {
        const InEx::ExPackageNotRegistered failure(file, 1, typeName);
        const InEx::ExPackageNotRegistered copied(failure);
        return std::string(copied.getPackageTag().get());
    };
    EXPECT_EQ(tagOf(typeid(Vn::InInit<VnInit::base>).name()), "VnInit::base");
    EXPECT_EQ(tagOf(typeid(Vn::InEx).name()), "Vn::InEx") << "no InInit";
    EXPECT_EQ(tagOf("not a type's name"), "not a type's name");
    EXPECT_EQ(tagOf(""), "");
    EXPECT_EQ(tagOf(nullptr), "");
    EXPECT_EQ(tagOf(std::string(3000, '?').c_str()), std::string(256, '?'));
    const InEx::ExPackageNotRegistered failure(file, 1, typeid(Vn::InInit<VnInit::base>).name());
    EXPECT_EQ(failure.getReason(),
              std::string("Init Package not registered: '") + typeid(Vn::InInit<VnInit::base>).name() + "'.");
}

TEST(InEx, messageWithDescriptionAndKey)
{
    const std::string description(300, 'd');
    const std::string key(300, 'k');
    const std::string expected = "Trying to do post initialization registration of context alias instance: '" +
                                 description.substr(0, 256) + "' (key: " + key.substr(0, 256) + ").";
    expectThrow<InEx::ExNoNewContextAliasAfterInit, std::logic_error>(
        [&] { throw InEx::ExNoNewContextAliasAfterInit(file, 1, description.c_str(), key.c_str()); },
        expected.c_str());
}

TEST(InEx, cloneHasTheConcreteType)
{
    const InEx::ExPackageInitError error(file, 1, "p");
    const std::unique_ptr<Vn::ExBase> clone(error.clone());
    Vn::ExBase const& copied = *clone;
    EXPECT_EQ(typeid(copied), typeid(InEx::ExPackageInitError));
    EXPECT_STREQ(clone->getReason(), "Init error in package: 'p'.");
}

TEST(InEx, everyClassIsCaughtThroughTheFamily)
{
    EXPECT_THROW(throw InEx::ExDoubleInit(file, 1), InEx);
    EXPECT_THROW(throw InEx::ExInvalidObject(file, 1, "x"), InEx);
    EXPECT_THROW(throw Vn::InSingletonEx::ExNotInitialized(file, 1, "x"), InEx);
}
