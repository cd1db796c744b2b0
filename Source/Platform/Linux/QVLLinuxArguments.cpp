#include "QVLLinuxArguments.h"

#include "QVLJSONSerialization.h"

#include <fstream>

namespace {

bool isKey(const std::string& argument) {
    if (argument.size() < 2 || argument[0] != '-') {
        return false;
    }
    const char first = argument[1];
    return first != '-' && !(first >= '0' && first <= '9');
}

QVLJSONValue valueFrom(const std::string& argument) {
    const auto read = QVLJSONSerialization::JSONObjectWithData(argument, QVLJSONSerialization::Reading::Fragments);
    // What is nested to the limit would not fit into the dictionary of all defaults.
    if (read && read.value.depth() < QVLJSONValue::kMaximumDepth) {
        return read.value;
    }
    if (argument == "YES" || argument == "NO") {
        return argument == "YES";
    }
    return argument;
}

} // namespace

std::vector<std::string> QVLProcessArguments() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::string argument;
    std::vector<std::string> arguments;
    std::getline(file, argument, '\0');
    while (std::getline(file, argument, '\0')) {
        arguments.push_back(argument);
    }
    return arguments;
}

QVLJSONDictionary QVLDefaultsFromArguments(const std::vector<std::string>& arguments) {
    QVLJSONDictionary defaults;
    for (std::size_t index = 0; index + 1 < arguments.size() && arguments[index] != "--"; ++index) {
        if (isKey(arguments[index])) {
            const std::string key = arguments[index].substr(1);
            defaults = defaults.withValueForKey(valueFrom(arguments[++index]), key);
        }
    }
    return defaults;
}
