// SPDX-License-Identifier: BSD-3-Clause
#include "decodersettings.h"

#include "log.h"

#include <cstring>
#include <string>

namespace Veltra {
namespace Ocelle {

namespace {
// Whether \a text is \a second.
bool isSecond(const char *variable, const char *text, const char *first, const char *second)
{
    if (!text || !*text || std::strcmp(text, first) == 0)
        return false;
    if (std::strcmp(text, second) == 0)
        return true;
    printLine(std::string(variable) + " is \"" + text + "\", not \"" + first + "\" or \"" + second +
              "\"; taking \"" + first + "\"");
    return false;
}
} // namespace

DecoderSettings DecoderSettings::fromTexts(const char *output, const char *threads)
{
    DecoderSettings settings;
    if (isSecond("OCELLE_DECODER_OUTPUT", output, "buffer", "ycbcr"))
        settings.output = DecoderOutput::YCbCr;
    if (isSecond("OCELLE_DECODER_THREADS", threads, "delay", "throughput"))
        settings.threads = DecoderThreads::Throughput;
    return settings;
}

} // namespace Ocelle
} // namespace Veltra
