#include <palaver/qpvsink.h>

QPVSink::~QPVSink() = default;
