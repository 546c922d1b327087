// The program of checkheaders.py, with two libraries that both have all public headers. Ends with 0 if the two agree; says what
// they don't agree about.
#include <base/exinternalerror.h>
#include <base/vector.h>

#include <cstddef>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>

#define VN_DECLARE_LIBRARY(name)                                  \
    namespace name                                                \
    {                                                             \
    std::string describe();                                       \
    void throwOwn();                                              \
    void throwFailure();                                          \
    Vn::Vector<std::string> makeWords();                          \
    std::size_t countWords(Vn::Vector<std::string> const& words); \
    void makeSingleton(int number);                               \
    int getSingleton();                                           \
    }
VN_DECLARE_LIBRARY(one)
VN_DECLARE_LIBRARY(two)

namespace
{
int faults = 0;

void expect(bool isTrue, char const* claim)
{
    if (!isTrue) {
        std::cout << "not so: " << claim << '\n';
        ++faults;
    }
}

bool isCaughtAsOwn(void (*function)())
{
    try {
        function();
    } catch (Vn::ExInternalError const& failure) {
        return std::strcmp(failure.getReason(), "own") == 0;
    } catch (...) {
    }
    return false;
}

bool isCaughtAsStandard(void (*function)())
{
    try {
        function();
    } catch (std::exception const& failure) {
        return std::strcmp(failure.what(), "failure") == 0;
    }
    return false;
}
}  // namespace

int main()
{
    expect(!one::describe().empty() && one::describe() == two::describe(), "both compute the same");
    expect(isCaughtAsOwn(&one::throwOwn) && isCaughtAsOwn(&two::throwOwn),
           "the library's exceptions are one class");
    expect(isCaughtAsStandard(&one::throwFailure) && isCaughtAsStandard(&two::throwFailure),
           "an exception of either library is a standard one");
    expect(two::countWords(one::makeWords()) == 2 && one::countWords(two::makeWords()) == 2,
           "what one library makes the other one copies and frees");
    one::makeSingleton(22);
    expect(two::getSingleton() == 22, "a singleton that one library makes is that of the other one");
    return faults == 0 ? 0 : 1;
}
