// Private to lmlibraries.cpp.
#pragma once

#include <base/lmlibrary.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace Vn
{

/// The text of a list of modules, which LmLibraries::dumpList() prints. Its blanks at line ends are part of the
/// format.
///
///     LmText::of(libraries);    // "\n\nLibrary: 0 \n\tLibrary path: /usr/bin/app \n..."
///
/// Tests: tests/base/lmlibrariestest.cpp.
class LmText
{
public:
    /// The entries in the order of the list, numbered from 0; "" for an empty list.
    static std::string of(std::vector<LmLibrary> const& libraries)
    {
        std::string text;
        int number = 0;
        for (LmLibrary const& library : libraries)
            add(text, library, number++);
        return text;
    }

private:
    /// A heading, path and address, then the blocks, numbered from 0 in each library.
    static void add(std::string& text, LmLibrary const& library, int number)
    {
        text += "\n\nLibrary: " + std::to_string(number) + " \n";
        text += std::string("\tLibrary path: ") + library.getPath() + " \n";
        text += "\tAddress: " + pointer(library.getAddress()) + " \n\n";
        int blockNumber = 0;
        for (LmBlock const& block : library.getBlocks())
            add(text, block, blockNumber++);
    }

    /// A block of size 0 has its number only.
    static void add(std::string& text, LmBlock const& block, int number)
    {
        text += "\tBlock: " + std::to_string(number) + " \n";
        if (block.getSize() == 0)
            return;
        // Intended: the line ends with a blank behind its line end, so the next one begins with it. Do not mend: the
        // format is fixed to the byte.
        text += "\t\tAddress: " + pointer(block.getAddress()) + " \n ";
        text += "\t\tSize:    " + std::to_string(static_cast<int>(block.getSize())) + " \n";  // 32 bits, signed
        text += "\t\tFlags:   ";
        // The order of the words differs from that of the bits.
        const struct
        {
            unsigned flag;
            char const* word;
        } words[] = {
            {LmBlock::Read, "READ "},
            {LmBlock::Write, "WRITE "},
            {LmBlock::CopyOnWrite, "COPY "},
            {LmBlock::Execute, "EXECUTE "},
        };
        for (auto const& word : words)
            text += (block.getFlags() & word.flag) != 0 ? word.word : "";
        text += "\n";
    }

    /// As the platform's own "%p" writes it: "0x7f00" on Linux, "0000000000007F00" on Windows.
    // By printf and not by a stream, whose format a program may have changed.
    static std::string pointer(std::uintptr_t address)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%p", reinterpret_cast<void*>(address));
        return text;
    }
};

}  // namespace Vn
