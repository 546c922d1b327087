// Paths beside a grammar that takes them apart into names, one character after the other.
#include <base/osfileex.h>
#include <base/osfilepath.h>
#include <base/osfilepathgrammar_p.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <string>
#include <vector>

namespace
{
using Vn::OsFilePath;
using Vn::OsFilePathGrammars;
using Names = std::vector<std::string>;

/// Texts in which separators, dots and their neighbours are as frequent as letters.
std::string anyPath()
{
    return *rc::gen::container<std::string>(rc::gen::element('/', '/', '.', '.', 'a', 'b', '\\', ':', ' '));
}

/// The names of a path, and whether it ends in a separator.
Names namesOf(std::string const& path)
{
    Names names(1);
    for (char character : path)
        if (character == '/')
            names.emplace_back();
        else
            names.back() += character;
    return names;
}

/// From the root, without "." and "..".
std::string resolved(std::string const& folder, std::string const& path)
{
    Names stack;
    std::string last = "/";
    for (std::string const& name : namesOf(path.starts_with('/') ? path : folder + "/" + path)) {
        last = name;
        if (name == "..") {
            if (!stack.empty())
                stack.pop_back();
        } else if (!name.empty() && name != ".")
            stack.push_back(name);
    }
    std::string whole;
    for (std::string const& name : stack)
        whole += "/" + name;
    if (last.empty() || whole.empty())
        whole += "/";
    return whole;
}
}  // namespace

TEST(PathProperty, aPathIsResolvedNameByName)
{
    EXPECT_TRUE(rc::check([] {
        const std::string path = anyPath();
        RC_PRE(!path.empty());
        RC_ASSERT(OsFilePathGrammars::resolveOnLinux("/here/there", path) == resolved("/here/there", path));
    }));
}

TEST(PathProperty, whatIsJoinedHasOneSeparatorInBetween)
{
    EXPECT_TRUE(rc::check([] {
        const std::string left = anyPath();
        const std::string right = anyPath();
        const bool needsOne = !left.empty() && left.back() != '/';
        OsFilePath path(left.c_str());
        if (right.starts_with('/')) {
            RC_ASSERT_THROWS_AS(path += OsFilePath(right.c_str()), Vn::OsFileEx::ExIllegalPathConcat);
            RC_ASSERT(left == path.getChars());
            return;
        }
        path += OsFilePath(right.c_str());
        RC_ASSERT(left + (needsOne ? "/" : "") + right == path.getChars());
    }));
}

TEST(PathProperty, anElementHasNoSeparator)
{
    EXPECT_TRUE(rc::check([] {
        const std::string left = anyPath();
        const std::string right = anyPath();
        OsFilePath path(left.c_str());
        if (right.find('/') != std::string::npos) {
            RC_ASSERT_THROWS_AS(path += right.c_str(), Vn::OsFileEx::ExSeparatorNotAllowed);
            RC_ASSERT(left == path.getChars());
        } else {
            path += right.c_str();
            RC_ASSERT(left + (!left.empty() && left.back() != '/' ? "/" : "") + right == path.getChars());
        }
    }));
}

TEST(PathProperty, aPathComesApartAtItsLastSeparator)
{
    EXPECT_TRUE(rc::check([] {
        const std::string text = "/" + anyPath();
        const OsFilePath path(text.c_str());
        const std::string whole = resolved("", text);
        const std::string base = whole.substr(whole.rfind('/') + 1);
        RC_ASSERT(base == path.getBaseName().getChars());
        const std::string directory = whole.substr(0, whole.rfind('/'));
        RC_ASSERT((directory.empty() ? "/" : directory) == path.getDirectoryName().getChars());
        const std::size_t dot = base.rfind('.');
        const Vn::ArrayPtr<char> extension = path.getExtension();
        RC_ASSERT((dot == std::string::npos ? "" : base.substr(dot + 1)) == extension.get());
        RC_ASSERT(path.isAbsolute() && !path.isRelative());
    }));
}

TEST(PathProperty, pathsCompareAsTheirBytes)
{
    EXPECT_TRUE(rc::check([](std::string const& left, std::string const& right) {
        const std::string a = left.c_str();
        const std::string b = right.c_str();
        const int order = a.compare(b);
        RC_ASSERT(OsFilePath::compare(a.c_str(), b.c_str()) == (order < 0 ? -1 : order > 0 ? 1 : 0));
    }));
}
