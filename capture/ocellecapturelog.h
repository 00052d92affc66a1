#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(qLcCapture) // "veltra.palaver.capture"
