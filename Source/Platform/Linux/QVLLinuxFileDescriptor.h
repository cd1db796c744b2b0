#pragma once

#include <string>
#include <utility>

/// One open file, closed when this goes. Calls that a signal interrupts are made again; a failed call leaves its reason
/// in `errno`.
class QVLLinuxFileDescriptor final {
public:
    [[nodiscard]] static QVLLinuxFileDescriptor open(const std::string& path, int flags, unsigned mode = 0);

    QVLLinuxFileDescriptor(QVLLinuxFileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    QVLLinuxFileDescriptor& operator=(QVLLinuxFileDescriptor&&) = delete;
    ~QVLLinuxFileDescriptor() { close(); }

    [[nodiscard]] int number() const { return m_number; }
    explicit operator bool() const { return m_number >= 0; }

    /// Whether it is a file proper: no directory, pipe, socket or device.
    [[nodiscard]] bool isRegularFile() const;
    [[nodiscard]] bool readAll(std::string& data) const;
    [[nodiscard]] bool writeAll(const char* data, std::size_t size) const;
    [[nodiscard]] bool synchronize() const;
    /// Closes early, for whoever wants to know whether it worked.
    bool close();

private:
    explicit QVLLinuxFileDescriptor(int number) : m_number(number) {}

    int m_number;
};
