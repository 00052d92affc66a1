// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "codecworkerfixture.h"
#include "encodeservicefixture.h"
#include "ocelleencodeworker.h"

#include <QCoreApplication>
#include <QStringList>

#include <memory>

/*! A worker that the test drives. Its encoders are "encoder 1" and so on. */
class EncodeWorkerFixture : public CodecWorkerFixture<EncodeServiceFixture, OcelleEncodeWorker>
{
public:
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> makeEncoder()
    {
        return std::make_shared<FakeVideoEncoder>(nextNumber(), script);
    }
    bool startWorker() { return worker.start(makeEncoder(), encoderSettings()); }
    void work() { QCoreApplication::processEvents(); }
    QStringList calls() const { return CallLog::instance().texts("encoder"); }
};
