#pragma once

#include <csignal>

#include <sys/resource.h>

/// Makes writing beyond some bytes fail in this process, as a full disk does.
class FileSizeLimit final {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_oldHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limit = {bytes, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }

private:
    rlimit m_old = {};
    void (*m_oldHandler)(int);
};
