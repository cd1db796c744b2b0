#include "Child.h"

#include "BareScript.h"
#include "QVLJSONSerialization.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

std::string inputsText(const Workload& workload, std::size_t variation) {
    return QVLJSONSerialization::dataWithJSONObject(workload.inputs(variation)).text;
}

} // namespace

std::string outputOf(Program program, const std::vector<std::string>& arguments) {
    std::string command = program == Program::Bare ? QVL_BENCHMARK_BARE_PROGRAM : QVL_BENCHMARK_ENGINE_PROGRAM;
    for (const std::string& argument : arguments) {
        command += " '" + argument + "'";
    }
    FILE* const pipe = ::popen(("exec " + command).c_str(), "r");
    std::string output;
    for (char piece[4096]; std::size_t count = std::fread(piece, 1, sizeof piece, pipe);) {
        output.append(piece, count);
    }
    if (::pclose(pipe) != 0) {
        throw std::runtime_error("failed: " + command);
    }
    return output;
}

void writeHostFiles(const Workload& workload, const std::string& directory) {
    BareScript script(workload.script());
    const JSStringRef inputs = BareScript::makeString(inputsText(workload, 0));
    const JSStringRef journals = BareScript::makeString(workload.journalsText());
    const JSStringRef answer = script.answer(inputs, journals);
    std::filesystem::create_directories(directory + "/quorvel");
    std::ofstream(directory + "/quorvel/OutputsCache.json") << BareScript::bytesOf(answer);
    std::ofstream(directory + "/quorvel/Journals.json") << workload.journalsText();
    std::ofstream(directory + "/script.js") << workload.script();
    std::ofstream(directory + "/inputs.json") << inputsText(workload, 1);
    for (const JSStringRef text : {inputs, journals, answer}) {
        JSStringRelease(text);
    }
}
