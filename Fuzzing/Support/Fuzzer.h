#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// What a fuzzer implements: one run on one text. It must bear any bytes and leave nothing behind for the next run.
void fuzz(std::string_view text);

/// Ends the process, and so makes the text a finding, when a claim about the library does not hold.
void expect(bool holds, const char* claim);
