#include "ocelledecodelog.h"

Q_LOGGING_CATEGORY(qLcDecode, "veltra.palaver.decoder.ocelle")
