#include "ocelleencodelog.h"

Q_LOGGING_CATEGORY(qLcEncode, "veltra.palaver.encoder.ocelle")
