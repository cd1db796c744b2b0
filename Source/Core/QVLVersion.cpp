#include "Quorvel.h"

const double QuorvelVersionNumber = 1.0;
const char QuorvelVersionString[] = "1.0";
