#include <Quorvel/Quorvel.h>

#include <iostream>

int main() {
    std::cout << "Quorvel " << QuorvelVersionString << '\n';
}
