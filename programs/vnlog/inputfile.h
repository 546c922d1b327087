#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace vnlog
{

/// Which file it is, whatever its name: device and index.
struct FileIdentity
{
    std::uint64_t device = 0, index = 0;

    bool operator==(FileIdentity const&) const = default;
};

/// A file that is read from its start, without a buffer. Others may write, rename and delete it meanwhile.
///
/// "-" is standard input. Failures throw std::runtime_error with the name and the system's reason. One thread.
class InputFile
{
public:
    explicit InputFile(std::string const& name);
    ~InputFile();
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;

    /// Up to `size` bytes; 0 at the end. What a pipe has is given at once.
    std::size_t read(char* buffer, std::size_t size);

    /// Back to the start; nothing for what cannot be wound back.
    void rewind();

    /// The bytes that the file has now; nothing for a pipe or a terminal.
    std::optional<std::uint64_t> getSize() const;

    FileIdentity getIdentity() const;

    /// The file that has this name now; nothing if there is none, or none that may be looked at.
    static std::optional<FileIdentity> findIdentity(std::string const& name);

    /// The file that is this process's standard output; nothing if it is no regular file.
    static std::optional<FileIdentity> findOutput();

private:
    std::string _name;
    std::intptr_t _handle;
};

}  // namespace vnlog
