#include "QVLLinuxClock.h"

QVLDate QVLLinuxClock::now() const {
    return std::chrono::floor<QVLDate::duration>(std::chrono::system_clock::now());
}
