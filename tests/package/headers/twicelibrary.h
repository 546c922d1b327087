// What each of the two libraries of checkheaders.py exports, in a namespace of its own: VN_TWICE_NAME.
#pragma once

namespace VN_TWICE_NAME
{
/// What this library's own copy of the templates computes.
[[gnu::visibility("default")]] std::string describe();
/// Throws Vn::ExInternalError, and EveryTemplate::Failure, whose class each library has.
[[gnu::visibility("default")]] void throwOwn();
[[gnu::visibility("default")]] void throwFailure();
/// Owned text and numbers that the other library takes over.
[[gnu::visibility("default")]] Vn::Vector<std::string> makeWords();
[[gnu::visibility("default")]] std::size_t countWords(Vn::Vector<std::string> const& words);
/// The singleton of the program: whichever library has made it.
[[gnu::visibility("default")]] void makeSingleton(int number);
[[gnu::visibility("default")]] int getSingleton();

std::string describe()
{
    return EveryTemplate::describe();
}

void throwOwn()
{
    throw Vn::ExInternalError("tests/package/headers", __LINE__, "own");
}

void throwFailure()
{
    throw EveryTemplate::Failure();
}

Vn::Vector<std::string> makeWords()
{
    Vn::Vector<std::string> words;
    words.push_back("a text that is longer than what a string holds in itself");
    return words;
}

std::size_t countWords(Vn::Vector<std::string> const& words)
{
    Vn::Vector<std::string> copy = words;
    copy.push_back("another");
    return copy.size();
}

void makeSingleton(int number)
{
    Vn::InSingleton<EveryTemplate::Value>::initialize(new EveryTemplate::Value{number});
}

int getSingleton()
{
    return Vn::InSingleton<EveryTemplate::Value>::getInstance().number;
}
}  // namespace VN_TWICE_NAME
