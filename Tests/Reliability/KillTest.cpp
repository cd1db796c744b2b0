#include "QVLQuorvelKeys.h"
#include "TemporaryDirectory.h"
#include "Victim.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>

namespace {

int roundCount() {
    const char* const wanted = std::getenv("QVL_KILL_ROUNDS");
    return wanted ? std::atoi(wanted) : 20;
}

TEST(Kill, AtAnyMomentLeavesFilesThatLoadAndLosesNoChangeThatWasTold) {
    const TemporaryDirectory directory;
    std::mt19937 random(20261122); // NOLINT(cert-msc32-c): the same rounds every time
    std::uint64_t told = 0;
    for (int round = 0; round < roundCount(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Victim victim(directory.path());
        victim.hear(1 + random() % 400);
        victim.kill();
        told = std::max(told, victim.lastCount());
        EXPECT_GE(Victim::savedCount(directory.path()), told);
        // Each removes what the one before it left, once it is old enough.
        std::ptrdiff_t aside = 0;
        for (const auto& item : std::filesystem::directory_iterator(directory.path("quorvel"))) {
            if (item.path().filename().string().starts_with(".quorvel-")) {
                std::filesystem::last_write_time(item,
                                                 std::filesystem::file_time_type::clock::now() - std::chrono::hours(2));
                ++aside;
            }
        }
        EXPECT_LE(aside, 2) << "one for each file that was being written";
    }
    EXPECT_GT(told, 0U);
}

} // namespace
