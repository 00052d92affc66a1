// SPDX-License-Identifier: BSD-3-Clause
// An encoder service that is still encoding when the application's event loop has returned, or when
// the application object has gone. tst_encodeafterexec runs this and looks whether it ends.
#include "encodeservicefixture.h"
#include "testpicture.h"

#include <QCoreApplication>
#include <QTimer>

#include <memory>
#include <string>

int main(int argc, char **argv)
{
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    const std::string way = argc == 2 ? argv[1] : "";
    auto fixture = std::make_unique<EncodeServiceFixture>();
    const bool active = way != "starting" && fixture->activate();
    if (way == "starting" && !fixture->control->start(surfaceFormat()))
        return 3;
    if (way != "starting" && !active)
        return 3;
    if (way == "restarting")
        fixture->settings->setVideoSettings(encoderSettings(1, QStringLiteral("rotate"), 90));
    QTimer::singleShot(0, application.get(), &QCoreApplication::quit);
    QCoreApplication::exec();
    if (way == "no application")
        application.reset();
    fixture->service.reset();
    return fixture->platform.codecs.heldEncoders() == 0 ? 0 : 4;
}
