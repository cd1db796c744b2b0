#include "Fuzzer.h"
#include "QVLScript.h"

/// A script's text, out of which the version in its header line is read.
void fuzz(std::string_view text) {
    const std::optional<std::string> version = QVLScript::parseScriptVersionFromJSContent(text);
    if (!version) {
        return;
    }
    expect(!version->empty(), "a version is never empty");
    expect(version->find_first_of("\r\n") == std::string::npos, "a version is of one line");
    expect(text.find(*version) != std::string_view::npos, "a version is a piece of the text");
    expect(QVLScript::parseScriptVersionFromJSContent("// Quorvel " + *version + ".js") == version,
           "a header line that is made of a version declares it");
}
