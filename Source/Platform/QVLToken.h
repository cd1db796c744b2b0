#pragma once

#include <functional>
#include <utility>

/// Keeps something going for as long as it lives: an observer registered, a delayed call pending, a request under way.
///
/// Move-only. Destroying or resetting it ends what it stands for, once; an empty token stands for nothing.
class QVLToken final {
public:
    QVLToken() noexcept = default;
    explicit QVLToken(std::function<void()> end) : m_end(std::move(end)) {}
    QVLToken(QVLToken&& other) noexcept : m_end(std::exchange(other.m_end, nullptr)) {}
    QVLToken& operator=(QVLToken&& other) noexcept {
        if (this != &other) {
            reset();
            m_end = std::exchange(other.m_end, nullptr);
        }
        return *this;
    }
    QVLToken(const QVLToken&) = delete;
    QVLToken& operator=(const QVLToken&) = delete;
    ~QVLToken() { reset(); }

    /// Ends it now.
    void reset() {
        if (const std::function<void()> end = std::exchange(m_end, nullptr)) {
            end();
        }
    }
    explicit operator bool() const noexcept { return static_cast<bool>(m_end); }

private:
    std::function<void()> m_end;
};
