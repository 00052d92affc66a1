#include <palaver/qpvencoder.h>

QPVEncoder::QPVEncoder(QObject *parent)
    : QObject(parent)
{
}

QPVEncoder::~QPVEncoder() = default;
