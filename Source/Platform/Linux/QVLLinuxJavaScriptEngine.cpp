#include "QVLLinuxJavaScriptEngine.h"

#include "QVLLinuxJavaScriptContext.h"
#include "QVLLinuxJavaScriptText.h"

#include <jsc/jsc.h>

#include <array>
#include <mutex>

#include <fcntl.h>
#include <unistd.h>

/// Where the engine keeps its options, exported though declared in no header. Once a first machine runs, in the host's
/// own use as well, this memory is read-only, and setting an option would end the process.
extern "C" [[gnu::weak]] unsigned char g_config[];

namespace {

/// Has the kernel put the byte that stands there back in its place, which fails where nothing may be written.
bool isWritable(unsigned char* address) {
    std::array<int, 2> ends{};
    if (!address || ::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return false;
    }
    const bool isPutBack = ::write(ends[1], address, 1) == 1 && ::read(ends[0], address, 1) == 1;
    ::close(ends[0]);
    ::close(ends[1]);
    return isPutBack;
}

/// Without it, compiled loops are not stopped. Too late in a host that has run JavaScript of its own before; a script
/// that never returns then goes on in the background for as long as the process lives.
void enablePollingTraps() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (isWritable(g_config)) {
            jsc_options_set_boolean("usePollingTraps", TRUE);
        }
    });
}

} // namespace

std::unique_ptr<QVLJavaScriptContext>
QVLLinuxJavaScriptEngine::makeContext(QVLJavaScriptContext::InterruptionTest shouldInterrupt) {
    enablePollingTraps();
    const JSContextGroupRef group = JSContextGroupCreate();
    if (!group) {
        return nullptr;
    }
    return std::make_unique<QVLLinuxJavaScriptContext>(group, std::move(shouldInterrupt));
}

std::shared_ptr<const QVLJavaScriptText> QVLLinuxJavaScriptEngine::makeText(std::string_view text) {
    return std::make_shared<QVLLinuxJavaScriptText>(text);
}
