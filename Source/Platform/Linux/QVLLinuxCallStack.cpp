#include "QVLCallStack.h"

#include <array>
#include <cstdlib>
#include <memory>

#include <cxxabi.h>
#include <execinfo.h>

namespace {

using Text = std::unique_ptr<char, decltype(&std::free)>;

/// A line reads "file(mangled+offset) [address]"; one without a name stays as it is.
std::string withReadableName(const std::string& line) {
    const auto open = line.find('(');
    const auto plus = line.find('+', open);
    // A plain C name could read as the code of a type.
    if (open == std::string::npos || plus == std::string::npos || line.compare(open, 3, "(_Z") != 0) {
        return line;
    }
    const std::string mangled = line.substr(open + 1, plus - open - 1);
    int status = 0;
    const Text name(abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status), &std::free);
    return name ? line.substr(0, open + 1) + name.get() + line.substr(plus) : line;
}

} // namespace

std::vector<std::string> QVLCallStackSymbols() {
    std::array<void*, 128> addresses;
    const int count = backtrace(addresses.data(), static_cast<int>(addresses.size()));
    const std::unique_ptr<char*, decltype(&std::free)> lines(backtrace_symbols(addresses.data(), count), &std::free);
    std::vector<std::string> symbols;
    // The first frame is this function's own.
    for (int index = 1; lines && index < count; ++index) {
        symbols.push_back(withReadableName(lines.get()[index]));
    }
    return symbols;
}
