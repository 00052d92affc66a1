#include "ocellecapturelog.h"

Q_LOGGING_CATEGORY(qLcCapture, "veltra.palaver.capture")
