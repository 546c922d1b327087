#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace VnTest
{

/// A socket that stands in the file system for as long as this lives, and is nobody's to open. Linux only.
class SocketFile
{
public:
    explicit SocketFile(std::string const& path) : _socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        ::sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        if (path.size() >= sizeof address.sun_path)
            throw std::runtime_error("too long for a socket: " + path);
        path.copy(address.sun_path, path.size());
        if (::bind(_socket, reinterpret_cast<::sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("the test can't make a socket at " + path);
    }
    ~SocketFile() { ::close(_socket); }
    SocketFile(SocketFile const&) = delete;
    SocketFile& operator=(SocketFile const&) = delete;

private:
    int _socket;
};

}  // namespace VnTest
