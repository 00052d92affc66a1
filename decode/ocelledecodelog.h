#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(qLcDecode) // "veltra.palaver.decoder.ocelle"
