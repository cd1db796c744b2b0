#include "Fuzzer.h"

#include "QVLLogging.h"
#include "QVLQuorvelEnvironment.h"

#include <cstdio>
#include <cstdlib>

namespace {

/// Drops every line but that of a failed assertion: nothing that comes from outside may bring one about.
class SilentLogger final : public QVLLogger {
public:
    void logDebugFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logInfoFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logWarnFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logErrorFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string& message) override {
        expect(!message.starts_with("Assertion failed: "), message.c_str());
    }
};

} // namespace

void expect(bool holds, const char* claim) {
    if (!holds) {
        std::fprintf(stderr, "This does not hold: %s\n", claim);
        std::abort();
    }
}

extern "C" int LLVMFuzzerInitialize(int* /*argumentCount*/, char*** /*arguments*/) {
    QVLQuorvelEnvironment::sharedEnvironment()->setLogger(std::make_shared<SilentLogger>());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz({reinterpret_cast<const char*>(data), size});
    return 0;
}
