// A path is an owned text and nothing else. Three kinds of rules act on it:
//
//     on the text alone     joining, absolute or relative, comparing: OsFilePathGrammar, for the system we run on
//     on a resolved path    base name, directory, extension: System::resolvePath() makes it absolute first
//     from the system       home, temporary and root directory: texts that are taken as they come
//
// The text is never normalised. Every change builds a new array before the old one goes, so an exception leaves the
// path as it is, and an argument may point into the path's own text. The directory functions have private forms that
// fill a caller's buffer of `bufferSize` bytes; they are part of the class's layout of functions, and longer texts
// are cut there.
#include <base/osfilepath.h>

#include <base/assertions.h>
#include <base/duplicatestring.h>
#include <base/osenv.h>
#include <base/osfileex.h>
#include <base/osfilepath_p.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>

namespace Vn
{
namespace
{
constexpr char sourceName[] = "src/base/osfilepath";
constexpr std::size_t bufferSize = 1024;  ///< of the forms that fill a caller's buffer

/// Throws ExInternalError for null. The text of the message is fixed, whatever the parameter is called.
void requireText(char const* text, int line)
{
    if (text == nullptr)
        Assertions::throwAssertionFailed(sourceName, line, "path != 0");
}
}  // namespace

OsFilePath::OsFilePath() : _path(duplicateString("")) {}

OsFilePath::OsFilePath(char const* path) : _path(duplicateString(path)) {}

OsFilePath::OsFilePath(OsFilePath const& other) : _path(duplicateString(other.getChars())) {}

OsFilePath& OsFilePath::operator=(OsFilePath const& other)
{
    // set() would cope with its own text; the test saves the copy.
    if (this != &other)
        set(other.getChars());
    return *this;
}

OsFilePath& OsFilePath::operator=(char const* path)
{
    set(path);
    return *this;
}

void OsFilePath::set(char const* path)
{
    requireText(path, __LINE__);
    _path = duplicateString(path);  // copied before the old array goes, as `path` may lie within it
}

bool OsFilePath::isAbsolute() const
{
    return isAbsolute(_path);
}

// Through a pointer to the rule, so that the tests can ask for the other system's.
bool OsFilePath::isAbsolute(char const* path)
{
    return System::getPathGrammar().isAbsolute(path);
}

int OsFilePath::compare(char const* a, char const* b)
{
    // Intended: by bytes, so "A" and "a" differ even where the file system takes them for one name. Do not mend: the
    // order is the same on every system.
    return OsFilePathGrammars::compare(a != nullptr ? a : "", b != nullptr ? b : "");
}

// The bytes as they are, control characters included: OsTerminal::shown() is for what goes to a terminal.
std::ostream& OsFilePath::dump(std::ostream& stream) const
{
    return stream << getChars();
}

// Intended: a path operand may hold separators but no root, a text operand neither; the two have different contracts.
// Do not mend: a text is one element, and the check finds paths that were passed by mistake.
OsFilePath& OsFilePath::operator+=(OsFilePath const& other)
{
    if (other.isAbsolute())
        throw OsFileEx::ExIllegalPathConcat(sourceName, __LINE__);
    concatenate(other.getChars());
    return *this;
}

OsFilePath OsFilePath::operator+(OsFilePath const& other) const
{
    // By way of +=, so that both forms refuse the same operands.
    OsFilePath joined(*this);
    joined += other;
    return joined;
}

OsFilePath& OsFilePath::operator+=(char const* element)
{
    requireText(element, __LINE__);
    if (std::strchr(element, System::getPathGrammar().separator) != nullptr)
        throw OsFileEx::ExSeparatorNotAllowed(sourceName, __LINE__);
    concatenate(element);
    return *this;
}

OsFilePath OsFilePath::operator+(char const* element) const
{
    OsFilePath joined(*this);
    joined += element;
    return joined;
}

// The one way to join, behind the checks of the operators:
//
//     "left"  and "0001.exr"  ->  "left/0001.exr"
//     "left/" and "0001.exr"  ->  "left/0001.exr"
//     ""      and "0001.exr"  ->  "0001.exr"
//     "left"  and ""          ->  "left/"
void OsFilePath::concatenate(char const* tail)
{
    // Not through OsFilePathGrammar::join(): its string would cost a second allocation and copy.
    const char separator = System::getPathGrammar().separator;
    const std::size_t length = std::strlen(_path);
    const std::size_t tailLength = std::strlen(tail);
    ArrayPtr<char> joined(new char[length + tailLength + 2]);  // a separator and the terminator
    char* end = std::copy_n(_path.get(), length, joined.get());
    if (length != 0 && end[-1] != separator)
        *end++ = separator;
    std::copy_n(tail, tailLength + 1, end);  // before `_path` goes: `tail` may be our own text
    _path = joined;
}

// Empty if the resolved path ends in a separator: "pass/" names what is in the directory, not the directory itself.
OsFilePath OsFilePath::getBaseName() const
{
    const System::ResolvedPath resolved = System::resolvePath(_path);
    return OsFilePath(resolved.path.c_str() + resolved.lastElement);
}

OsFilePath OsFilePath::getDirectoryName() const
{
    // The stored text matters too: "." and ".." name a directory themselves, and keep their last element.
    System::ResolvedPath resolved = System::resolvePath(_path);
    return OsFilePath(System::getPathGrammar().directoryOf(getChars(), std::move(resolved.path)).c_str());
}

ArrayPtrRet<char> OsFilePath::getExtension() const
{
    // Of the base name only: a dot in a directory's name starts no extension.
    const OsFilePath name = getBaseName();
    const std::string extension(OsFilePathGrammars::extensionOf(name.getChars()));
    return duplicateString(extension.c_str());
}

// HOME alone, on both systems: a program is told by it where to look, and a test points it elsewhere.
OsFilePath OsFilePath::getHomeDir()
{
    char buffer[bufferSize];
    getHomeDir(buffer);
    return OsFilePath(buffer);
}

void OsFilePath::getHomeDir(char* buffer)
{
    char const* const home = OsEnv::getVariable("HOME");
    if (home == nullptr)
        throw OsFileEx::ExHomeNotDefined(sourceName, __LINE__);
    // The only place where separators are converted: programs that came from other systems set HOME with "/".
    const std::size_t length = ::strnlen(home, bufferSize - 1);
    std::replace_copy(home, home + length, buffer, '/', System::getPathGrammar().separator);
    buffer[length] = '\0';
}

// The text as the system gives it; whether there is such a directory shows when it is used.
OsFilePath OsFilePath::getTempDir()
{
    char buffer[bufferSize];
    getTempDir(buffer);
    return OsFilePath(buffer);
}

void OsFilePath::getTempDir(char* buffer)
{
    System::getTempDir(buffer, bufferSize);
}

// On Windows the root of the current drive, so it changes with the drive.
OsFilePath OsFilePath::getRootDir()
{
    char buffer[bufferSize];
    getRootDir(buffer);
    return OsFilePath(buffer);
}

void OsFilePath::getRootDir(char* buffer)
{
    System::getRootDir(buffer, bufferSize);
}

char const* OsFilePath::getSeparator()
{
    // A text of one character, made at the first call; later calls from any thread find it ready.
    static const char separator[] = {System::getPathGrammar().separator, '\0'};
    return separator;
}

std::ostream& operator<<(std::ostream& stream, OsFilePath const& path)
{
    return path.dump(stream);
}

}  // namespace Vn
