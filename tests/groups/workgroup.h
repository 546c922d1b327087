#pragma once

#include <base/testgroup.h>

#include <stdexcept>
#include <string>

/// A group whose work grows with its first argument.
class WorkGroup : public Vn::TestGroup
{
public:
    void execute(int argc, char** const argv) override { work(toCount(argc, argv)); }

protected:
    WorkGroup(char const* name, char const* description, unsigned long defaultCount)
        : TestGroup(name), _defaultCount(defaultCount)
    {
        setUsage("[COUNT]");
        setDescription(description);
    }

    virtual void work(unsigned long count) = 0;

    /// A failure of the run, told with what was expected.
    static void require(bool isRight, char const* what)
    {
        if (!isRight)
            throw std::logic_error(std::string("wrong: ") + what);
    }

private:
    unsigned long toCount(int argc, char** argv) const
    {
        if (argc < 1)
            return _defaultCount;
        std::size_t end = 0;
        const std::string text = argv[0];
        const unsigned long count = std::stoul(text, &end);
        if (argc > 1 || end != text.size())
            throw std::invalid_argument("one number is taken: " + text);
        return count;
    }

    unsigned long _defaultCount;
};
