#include <palaver/qpvencodedvideosink.h>

QPVEncodedVideoSink::~QPVEncodedVideoSink() = default;
