#include "QVLLinuxFileDescriptor.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

} // namespace

QVLLinuxFileDescriptor QVLLinuxFileDescriptor::open(const std::string& path, int flags, unsigned mode) {
    return QVLLinuxFileDescriptor(uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); }));
}

bool QVLLinuxFileDescriptor::isRegularFile() const {
    struct stat status = {};
    return ::fstat(m_number, &status) == 0 && S_ISREG(status.st_mode);
}

bool QVLLinuxFileDescriptor::readAll(std::string& data) const {
    struct stat status = {};
    if (::fstat(m_number, &status) == 0 && S_ISREG(status.st_mode)) {
        data.reserve(static_cast<std::size_t>(status.st_size));
    }
    std::array<char, 65536> block;
    for (;;) {
        const ssize_t count = uninterrupted([&] { return ::read(m_number, block.data(), block.size()); });
        if (count <= 0) {
            return count == 0;
        }
        data.append(block.data(), static_cast<std::size_t>(count));
    }
}

bool QVLLinuxFileDescriptor::writeAll(const char* data, std::size_t size) const {
    while (size > 0) {
        const ssize_t count = uninterrupted([&] { return ::write(m_number, data, size); });
        if (count < 0) {
            return false;
        }
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool QVLLinuxFileDescriptor::synchronize() const {
    return uninterrupted([&] { return ::fsync(m_number); }) == 0;
}

bool QVLLinuxFileDescriptor::close() {
    const int number = std::exchange(m_number, -1);
    // An interrupted close has closed all the same; closing again could hit somebody else's file.
    return number < 0 || ::close(number) == 0 || errno == EINTR;
}
