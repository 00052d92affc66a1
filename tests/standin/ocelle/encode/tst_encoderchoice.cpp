// SPDX-License-Identifier: BSD-3-Clause
#include "scriptedencoders.h"
#include "stderrcapture.h"

#include <QtTest>

#include <encoderchoice.h>

using namespace Veltra::Ocelle;

class TestEncoderChoice : public QObject
{
    Q_OBJECT

    std::shared_ptr<ScriptedEncoders> m_hardware;
    std::shared_ptr<ScriptedEncoders> m_software;
    std::string m_error;

private slots:
    void init()
    {
        m_hardware = std::make_shared<ScriptedEncoders>(CodecType::VP8, "hard", true, 1);
        m_software = std::make_shared<ScriptedEncoders>(CodecType::VP8, "soft", false, 1);
        m_error.clear();
    }

    void open_takesThePreferredOne()
    {
        EncoderChoice choice({ m_hardware, m_software });
        QVERIFY(!choice.encoder());
        StderrCapture lines;
        QVERIFY(choice.open({}, &m_error));
        QVERIFY(choice.encoder());
        QCOMPARE(m_hardware->alive, 1);
        QVERIFY(m_software->opened.empty());
        QVERIFY(choice.open({}, &m_error)); // again: the same
        QCOMPARE(m_hardware->opened.size(), std::size_t(2));
        QCOMPARE(lines.lines(), QStringList());
    }

    void open_takesTheNext_whereThePreferredOneFails()
    {
        m_hardware->openError = "the device is busy";
        EncoderChoice choice({ m_hardware, m_software });
        StderrCapture lines;
        QVERIFY(choice.open({}, &m_error));
        QCOMPARE(lines.lines(), QStringList { "ocelle: taking soft, since hard does not open (the "
                                              "device is busy)" });
        QCOMPARE(m_hardware->alive, 0);
        QCOMPARE(m_software->alive, 1);
    }

    void open_takesTheNext_whereThePreferredOneRefusesLater()
    {
        EncoderChoice choice({ m_hardware, m_software });
        QVERIFY(choice.open({}, &m_error));
        m_hardware->openError = "odd size";
        StderrCapture lines;
        QVERIFY(choice.open({}, &m_error));
        QVERIFY(lines.lines().join(' ').contains("taking soft"));
        m_hardware->openError.clear();
        QVERIFY(choice.open({}, &m_error)); // and stays with it
        QCOMPARE(m_hardware->alive, 0);
        QCOMPARE(m_hardware->opened.size(), std::size_t(2));
    }

    void open_saysWhy_whereNoneOpens()
    {
        m_hardware->openError = "one reason";
        m_software->openError = "another reason";
        EncoderChoice choice({ m_hardware, m_software });
        QVERIFY(!choice.open({}, &m_error));
        QCOMPARE(m_error, std::string("another reason"));
        QVERIFY(!choice.encoder());
        m_hardware->openError.clear();
        QVERIFY(choice.open({}, &m_error)); // from the start
        QCOMPARE(m_hardware->alive, 1);
    }

    void open_fails_whereAllInstancesAreInUse()
    {
        auto first = std::make_unique<EncoderChoice>(
                std::vector<std::shared_ptr<EncoderFactory>> { m_software });
        EncoderChoice second({ m_software });
        QVERIFY(first->open({}, &m_error));
        QVERIFY(!second.open({}, &m_error));
        QCOMPARE(m_error, std::string("all 1 instances of soft are in use"));
        first.reset();
        QVERIFY(second.open({}, &m_error));
    }
};

QTEST_GUILESS_MAIN(TestEncoderChoice)
#include "tst_encoderchoice.moc"
