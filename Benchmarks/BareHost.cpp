#include "BareHost.h"

#include <cstdint>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

BareHost::BareHost(const std::string& script, std::string path)
    : m_path(std::move(path)), m_answered(::eventfd(0, EFD_CLOEXEC)), m_thread([this, script] { serve(script); }) {
    waitUntilKept();
}

BareHost::~BareHost() {
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
    }
    m_changed.notify_all();
    m_thread.join();
    ::close(m_answered);
}

void BareHost::run(JSStringRef inputs, JSStringRef journals) {
    {
        const std::lock_guard lock(m_mutex);
        m_inputs = inputs;
        m_journals = journals;
        m_isBusy = true;
    }
    m_changed.notify_all();
    pollfd descriptor = {m_answered, POLLIN, 0};
    ::poll(&descriptor, 1, -1);
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = ::read(m_answered, &count, sizeof count);
}

void BareHost::waitUntilKept() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_isBusy; });
}

void BareHost::serve(const std::string& script) {
    BareScript bare(script);
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_isBusy = false;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isBusy || m_isClosed; });
        if (m_isClosed) {
            return;
        }
        lock.unlock();
        const JSStringRef answer = bare.answer(m_inputs, m_journals);
        const std::string bytes = BareScript::bytesOf(answer);
        JSStringRelease(answer);
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t told = ::write(m_answered, &one, sizeof one);
        writeBare(bytes, m_path, /*isDurable=*/false);
        lock.lock();
    }
}
