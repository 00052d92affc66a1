#include <palaver/qpvmediaservicecodecinfointerface.h>

QPVMediaServiceCodecInfoInterface::~QPVMediaServiceCodecInfoInterface() = default;
