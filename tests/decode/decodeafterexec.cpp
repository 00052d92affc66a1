// SPDX-License-Identifier: BSD-3-Clause
// A decoder service that is still decoding when the application's event loop has returned, or when
// the application object has gone. tst_decodeafterexec runs this and looks whether it ends.
#include "decodeservicefixture.h"

#include <QCoreApplication>
#include <QTimer>

#include <memory>
#include <string>

namespace {

enum Result { Good = 0, BadStart = 3, DecoderLeft = 4, BlockLeft = 5 };

} // namespace

int main(int argc, char **argv)
{
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    const std::string way = argc == 2 ? argv[1] : "";
    auto fixture = std::make_unique<DecodeServiceFixture>();
    const auto script = fixture->script;
    script->onFlush = [](FakeVideoDecoder &decoder) { decoder.fail("torn down"); };
    script->onDestroy = script->onFlush;
    if (way == "starting" ? !fixture->control->start(streamSettings()) : !fixture->activate())
        return BadStart;
    if (way == "restarting" &&
        !fixture->control->start(streamSettings(QStringLiteral("video/vp8"))))
        return BadStart;
    if (way == "blocked") {
        script->decodeGate.close();
        fixture->control->decode(testFrame(1));
        // Nobody opens the gate but the drop of the decoder, which the control tells of.
        QObject::connect(fixture->control, &QPVDecodeControl::statusChanged,
                         [&script] { script->decodeGate.open(); });
    }
    QTimer::singleShot(0, application.get(), &QCoreApplication::quit);
    QCoreApplication::exec();
    if (way == "no application")
        application.reset();
    fixture->service.reset();
    if (script->blocksReleased != script->blocksTaken)
        return BlockLeft;
    return fixture->platform.codecs.heldDecoders() == 0 ? Good : DecoderLeft;
}
