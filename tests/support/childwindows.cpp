// childwindows.cpp (Linux form: childposix.cpp)
#include "child.h"

#include <windows.h>

#include <cstdio>
#include <stdexcept>
#include <thread>

namespace VnTest
{
namespace
{
constexpr DWORD abortExitCode = 3;                ///< what the C library's abort() exits with
constexpr DWORD firstExceptionCode = 0xC0000000;  ///< the system's exceptions, as exit codes

struct Pipe
{
    Pipe()
    {
        SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        if (!::CreatePipe(&readEnd, &writeEnd, &inheritable, 0))
            throw std::runtime_error("no pipe");
        ::SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    }
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
};

/// Quotes an argument so that the C library of the child finds it whole again.
std::string quoted(std::string const& argument)
{
    std::string result = "\"";
    std::size_t backslashes = 0;
    for (char character : argument) {
        if (character == '"')
            result.append(backslashes + 1, '\\');
        backslashes = character == '\\' ? backslashes + 1 : 0;
        result += character;
    }
    return result.append(backslashes, '\\') + '"';
}

void readAll(HANDLE end, std::string& text)
{
    char buffer[4096];
    DWORD got = 0;
    while (::ReadFile(end, buffer, sizeof buffer, &got, nullptr) && got != 0)
        text.append(buffer, got);
}

/// The C library's streams write a carriage return before each line feed; takes exactly these away.
void undoTextMode(std::string& text)
{
    std::string original;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text.compare(i, 2, "\r\n") != 0)
            original += text[i];
    text = original;
}
}  // namespace

char const* const programSuffix = ".exe";

std::vector<std::string> getOwnEnvironment()
{
    std::vector<std::string> entries;
    char* const block = ::GetEnvironmentStringsA();
    for (char const* entry = block; *entry != '\0'; entry += entries.back().size() + 1)
        entries.emplace_back(entry);
    ::FreeEnvironmentStringsA(block);
    return entries;
}

ChildRun runProcess(std::vector<std::string> const& command, std::vector<std::string> const& environment)
{
    std::string line;
    for (std::string const& argument : command)
        line += (line.empty() ? "" : " ") + quoted(argument);
    std::string block;
    for (std::string const& entry : environment)
        block += entry + '\0';

    const Pipe out;
    const Pipe err;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = out.writeEnd;
    startup.hStdError = err.writeEnd;
    PROCESS_INFORMATION process{};
    const BOOL started = ::CreateProcessA(command[0].c_str(), line.data(), nullptr, nullptr, TRUE, 0, block.data(),
                                          nullptr, &startup, &process);
    ::CloseHandle(out.writeEnd);
    ::CloseHandle(err.writeEnd);

    ChildRun run;
    DWORD exitCode = 0;
    if (started) {
        std::thread errReader([&] { readAll(err.readEnd, run.err); });
        readAll(out.readEnd, run.out);
        errReader.join();
        ::WaitForSingleObject(process.hProcess, INFINITE);
        ::GetExitCodeProcess(process.hProcess, &exitCode);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }
    ::CloseHandle(out.readEnd);
    ::CloseHandle(err.readEnd);
    if (!started)
        throw std::runtime_error("can't start " + command[0]);
    undoTextMode(run.out);
    undoTextMode(run.err);
    run.crashed = exitCode == abortExitCode || exitCode >= firstExceptionCode;
    run.exitCode = run.crashed ? -1 : static_cast<int>(exitCode);
    return run;
}

ChildRun runProcessOnTerminal(std::vector<std::string> const&, std::vector<std::string> const&, unsigned short)
{
    throw std::logic_error("no terminal can be made here");
}

std::string getProgramPath()
{
    return getProgramFile();
}

std::string getProgramFile()
{
    char path[MAX_PATH] = "";
    const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
    return std::string(path, length);
}

}  // namespace VnTest
