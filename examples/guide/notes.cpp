// notes: writes, lists, copies and reads files. Its page is docs/files.md.
#include <base/osdirectory.h>
#include <base/osfilereader.h>
#include <base/osfilewriter.h>
#include <base/osfsutils.h>
#include <base/osterminal.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
void write(Vn::OsFilePath const& path, std::string const& text)
{
    Vn::OsFileWriter writer(path, Vn::OsFileTypes::Permissions(), true);
    const auto size = static_cast<unsigned long>(text.size());
    if (writer.write(text.data(), size) != size)
        throw std::runtime_error("the device is full");
    writer.close();
}

std::string read(Vn::OsFilePath const& path)
{
    Vn::OsFileReader reader(path);
    std::string text;
    char block[4096];
    while (const std::uint32_t count = reader.read(block, sizeof block))
        text.append(block, count);
    return text;
}

/// The names in a folder that end in ".txt", sorted.
std::vector<std::string> list(Vn::OsFilePath const& folder)
{
    const Vn::ObjPtr<Vn::Vector<Vn::OsFilePath>> paths =
        Vn::OsDirectory(folder).getChildrenPath(Vn::OsFileTypes::LeafPath, Vn::OsLeafFileFilter(".txt"));
    std::vector<std::string> names;
    for (Vn::OsFilePath const& path : *paths)
        names.emplace_back(path.getChars());
    std::sort(names.begin(), names.end());
    return names;
}

void run()
{
    const Vn::OsFilePath notes("notes"), copy("copy");
    Vn::OsFsUtils::createDir(notes.getChars(), false);
    write(notes + "monday.txt", "call Ann");
    write(notes + "friday.txt", "send the reel");
    write(notes + "draft", "not a note yet");

    Vn::OsDirectory(notes).copyTo(copy);
    for (std::string const& name : list(copy))
        std::cout << Vn::OsTerminal::shown(name) << ": " << Vn::OsTerminal::shown(read(copy + name.c_str()))
                  << "\n";

    for (Vn::OsFilePath const& folder : {notes, copy}) {
        Vn::OsDirectory(folder).removeChildren(Vn::OsPassThroughFilter());
        Vn::OsFsUtils::removeDir(folder.getChars());
    }
    std::cout << "left behind: " << (Vn::OsFsUtils::fileExists("notes") ? "notes" : "nothing") << "\n";
}
}  // namespace

int main()
{
    try {
        run();
        return 0;
    } catch (std::exception const& failure) {
        std::cerr << "notes: " << Vn::OsTerminal::shown(failure.what()) << "\n";
        return 1;
    }
}
