// Private to lmlibraries.cpp.
#pragma once

#include <base/lmlibrary.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace Vn
{

/// The text of a list of modules.
class LmText
{
public:
    static std::string of(std::vector<LmLibrary> const& libraries)
    {
        std::string text;
        int number = 0;
        for (LmLibrary const& library : libraries)
            add(text, library, number++);
        return text;
    }

private:
    static void add(std::string& text, LmLibrary const& library, int number)
    {
        text += "\n\nLibrary: " + std::to_string(number) + " \n";
        text += std::string("\tLibrary path: ") + library.getPath() + " \n";
        text += "\tAddress: " + pointer(library.getAddress()) + " \n\n";
        int blockNumber = 0;
        for (LmBlock const& block : library.getBlocks())
            add(text, block, blockNumber++);
    }

    static void add(std::string& text, LmBlock const& block, int number)
    {
        text += "\tBlock: " + std::to_string(number) + " \n";
        if (block.getSize() == 0)
            return;
        text += "\t\tAddress: " + pointer(block.getAddress()) + " \n ";
        text += "\t\tSize:    " + std::to_string(static_cast<int>(block.getSize())) + " \n";  // 32 bits of it
        text += "\t\tFlags:   ";
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

    /// As the platform's own "%p" has it.
    static std::string pointer(std::uintptr_t address)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%p", reinterpret_cast<void*>(address));
        return text;
    }
};

}  // namespace Vn
