#include "Fuzzer.h"
#include "QVLURL.h"

#include <algorithm>

/// An address out of a feed. Its last component becomes the name of a file.
void fuzz(std::string_view text) {
    const std::optional<QVLURL> url = QVLURL::fromString(text);
    if (!url) {
        return;
    }
    expect(url->text() == text, "the text is kept");
    expect(!url->host().empty(), "there is a host");
    expect(!url->scheme().empty(), "there is a scheme");
    expect(std::none_of(url->scheme().begin(), url->scheme().end(),
                        [](char character) { return character >= 'A' && character <= 'Z'; }),
           "the scheme is in lower case");
    const std::string& name = url->lastPathComponent();
    expect(name != "." && name != ".." && name.find('/') == std::string::npos && name.find('\0') == std::string::npos,
           "the last component is the plain name of a file");
}
