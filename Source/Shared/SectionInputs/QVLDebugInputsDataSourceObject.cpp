#include "QVLDebugInputsDataSourceObject.h"

std::shared_ptr<QVLDebugInputsDataSourceObject> QVLDebugInputsDataSourceObject::initWithKey(std::string key,
                                                                                            QVLDebugValue value,
                                                                                            QVLDebugValue overrideValue,
                                                                                            double generationTime) {
    return std::shared_ptr<QVLDebugInputsDataSourceObject>(
        new QVLDebugInputsDataSourceObject(std::move(key), std::move(value), std::move(overrideValue), generationTime));
}

QVLDebugInputsDataSourceObject::QVLDebugInputsDataSourceObject(std::string key, QVLDebugValue value,
                                                               QVLDebugValue overrideValue, double generationTime)
    : QVLDebugDataSourceObject(std::move(key), std::move(value), std::move(overrideValue)),
      m_generationTime(generationTime) {}
