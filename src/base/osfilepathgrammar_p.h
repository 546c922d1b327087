// Private to osfilepath_p.h.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace Vn
{

/// How one system writes its paths: pure functions of their input, so that either system's rules are tested on both.
///
///     OsFilePathGrammars::onWindows().join("a", "b");    // "a\\b", on Linux as well
///
struct OsFilePathGrammar
{
    char separator;
    bool (*isAbsolute)(char const* path);
    bool keepsRoot;  ///< the directory of an element in the root is the root with its separator: "/a" gives "/"

    /// `path` and `tail` with one separator between them, unless `path` is empty or ends in one. An empty `tail`
    /// counts.
    std::string join(std::string_view path, std::string_view tail) const
    {
        std::string joined;
        joined.reserve(path.size() + 1 + tail.size());
        joined = path;
        if (!path.empty() && path.back() != separator)
            joined += separator;
        joined += tail;
        return joined;
    }

    /// What `resolved`, a path from the root, is cut to as the directory of `stored`, from which it was made. The
    /// last byte counts as well, so a path that ends in a separator loses just this one.
    std::string directoryOf(std::string_view stored, std::string resolved) const
    {
        if (stored == "." || stored == "..")
            return resolved;
        const std::size_t last = resolved.rfind(separator);
        if (last == std::string::npos)
            return resolved;
        resolved.resize(last == 0 && keepsRoot ? 1 : last);
        return resolved;
    }
};

/// The rules of the two systems, and what Linux resolves itself.
struct OsFilePathGrammars
{
    /// By the text alone: "C:\\x", "C:x" and "\\\\host" are absolute, "C:", "\\temp" and "/a" are not.
    static bool isAbsoluteOnWindows(char const* path)
    {
        // Intended: any character before the colon counts as a drive, and shorter texts than three characters never
        // do. Do not mend: stored paths are joined by this rule.
        return ::strnlen(path, 3) == 3 && (path[1] == ':' || (path[0] == '\\' && path[1] == '\\'));
    }

    /// The empty path is relative.
    static bool isAbsoluteOnLinux(char const* path) { return path[0] == '/'; }

    static constexpr OsFilePathGrammar onWindows() { return {'\\', isAbsoluteOnWindows, false}; }
    static constexpr OsFilePathGrammar onLinux() { return {'/', isAbsoluteOnLinux, true}; }

    /// The bytes behind the last dot of `name`: "a.tar.gz" gives "gz", ".profile" gives "profile", "a" and "a." give
    /// "".
    static std::string_view extensionOf(std::string_view name)
    {
        const std::size_t dot = name.rfind('.');
        return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
    }

    /// -1, 0 or 1 by the first bytes that differ, taken as unsigned.
    static int compare(char const* left, char const* right)
    {
        const int difference = std::strcmp(left, right);
        return (difference > 0) - (difference < 0);
    }

    /// `path` from the root, against `directory` if it is relative. ".", ".." and doubled separators collapse by the
    /// text alone; a separator at the end stays.
    ///
    ///     "/home", "a/../b"   ->  "/home/b"
    ///     "/home", "a//b/"    ->  "/home/a/b/"
    ///     "/home", "/../.."   ->  "/": there is nothing above the root
    ///
    static std::string resolveOnLinux(std::string_view directory, std::string_view path)
    {
        std::string resolved;
        resolved.reserve(directory.size() + path.size() + 2);
        if (path.substr(0, 1) != "/")
            appendElements(resolved, directory);
        appendElements(resolved, path);
        if (resolved.empty() || (!path.empty() && path.back() == '/'))
            resolved += '/';
        return resolved;
    }

private:
    /// Appends the elements of `path`, each behind a separator; ".." removes the last one, if there is one.
    static void appendElements(std::string& resolved, std::string_view path)
    {
        while (!path.empty()) {
            const std::size_t length = std::min(path.find('/'), path.size());
            const std::string_view element = path.substr(0, length);
            path.remove_prefix(std::min(length + 1, path.size()));
            if (element == ".." && !resolved.empty())
                resolved.resize(resolved.rfind('/'));
            else if (!element.empty() && element != "." && element != "..")
                (resolved += '/') += element;
        }
    }
};

}  // namespace Vn
