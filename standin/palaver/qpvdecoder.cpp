#include <palaver/qpvdecoder.h>

QPVDecoder::QPVDecoder(QObject *parent)
    : QObject(parent)
{
}

QPVDecoder::~QPVDecoder() = default;
