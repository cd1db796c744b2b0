#include "QVLInputsManager.h"

QVLInputsManager::~QVLInputsManager() = default;
