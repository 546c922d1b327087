// Paths of any bytes, by the grammars of both systems and through the class: what is joined comes apart again, resolving
// gives a path from the root that resolves to itself, and no sanitizer says a word.
#include <base/exsyserror.h>
#include <base/osfileex.h>
#include <base/osfilepath.h>
#include <base/osfilepathgrammar_p.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
using Vn::OsFilePath;
using Vn::OsFilePathGrammar;
using Vn::OsFilePathGrammars;

void require(bool isRight)
{
    if (!isRight)
        std::abort();
}

void checkGrammar(OsFilePathGrammar const& grammar, std::string const& path, std::string const& tail)
{
    const std::string joined = grammar.join(path, tail);
    require(joined.compare(0, path.size(), path) == 0);
    require(joined.size() - path.size() - tail.size() <= 1);
    require(joined.compare(joined.size() - tail.size(), tail.size(), tail) == 0);
    require(grammar.join(grammar.join(path, ""), tail) == joined);
    const std::string directory = grammar.directoryOf(path, path);
    require(path.compare(0, directory.size(), directory) == 0);
    grammar.isAbsolute(path.c_str());
}

void checkResolving(std::string const& path)
{
    const std::string resolved = OsFilePathGrammars::resolveOnLinux("/here/there", path);
    require(resolved[0] == '/');
    require(resolved.find("//") == std::string::npos);
    require((resolved + "/").find("/./") == std::string::npos &&
            (resolved + "/").find("/../") == std::string::npos);
    require(OsFilePathGrammars::resolveOnLinux("/elsewhere", resolved) == resolved);
}

void checkClass(std::string const& text, std::string const& tail)
{
    OsFilePath path(text.c_str());
    require(text == path.getChars());
    require(OsFilePath::compare(path.getChars(), text.c_str()) == 0);
    try {
        path += OsFilePath(tail.c_str());
        require(path.isEmpty() == (text.empty() && tail.empty()));
    } catch (Vn::OsFileEx::ExIllegalPathConcat const&) {
        require(text == path.getChars());
    }
    const OsFilePath before(path);
    try {
        path += tail.c_str();
    } catch (Vn::OsFileEx::ExSeparatorNotAllowed const&) {
        require(OsFilePath::compare(before.getChars(), path.getChars()) == 0);
    }
    try {
        const OsFilePath base = path.getBaseName();
        require(std::strchr(base.getChars(), OsFilePath::getSeparator()[0]) == nullptr);
        require(path.getDirectoryName().isAbsolute());
        const Vn::ArrayPtr<char> extension = path.getExtension();
        require(std::strlen(extension) <= std::strlen(base.getChars()));
    } catch (Vn::ExSysErrorWindows const&) {
        require(path.isEmpty());
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // Two texts, the second behind the first line end; each in an allocation that fits.
    const std::string input(reinterpret_cast<char const*>(data), size);
    const std::size_t end = input.find('\n');
    const std::string path = input.substr(0, end).c_str();
    const std::string tail = end == std::string::npos ? "" : input.substr(end + 1).c_str();
    checkGrammar(OsFilePathGrammars::onWindows(), path, tail);
    checkGrammar(OsFilePathGrammars::onLinux(), path, tail);
    checkResolving(path);
    checkClass(path, tail);
    return 0;
}
