// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "calllog.h"
#include "codecworkerfixture.h"
#include "decodeservicefixture.h"
#include "ocelledecodeworker.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>
#include <QtTest>

#include <memory>

/*! A worker that the test drives. Its decoders are "decoder 1" and so on. */
class DecodeWorkerFixture : public CodecWorkerFixture<DecodeServiceFixture, OcelleDecodeWorker>
{
public:
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> makeDecoder()
    {
        return std::make_shared<FakeVideoDecoder>(nextNumber(), script);
    }
    bool startWorker() { return worker.start(makeDecoder(), streamSettings()); }
    /*! Does all there is to do, what comes up meanwhile too. */
    void work()
    {
        for (int round = 0; round < 3; ++round)
            QCoreApplication::processEvents();
    }
    void applyState() { QMetaObject::invokeMethod(&worker, "applyState"); } // at once
    void enqueue(int count, quint64 first = 1)
    {
        for (int i = 0; i < count; ++i)
            QVERIFY(worker.enqueue(testFrame(first + static_cast<quint64>(i))));
    }
    /*! Calls to the decoders, short of their settings. */
    QStringList calls() const
    {
        QStringList calls = CallLog::instance().texts("decoder");
        return calls.replaceInStrings(QRegularExpression(R"(\(codec.*\)|, type 0, xy)"), "");
    }
};
