// SPDX-License-Identifier: BSD-3-Clause
#include <QtTest>

#include <palaver/qpvencodedvideoframe.h>

#include <thread>

using MetaData = QPVEncodedVideoFrame::MetaData;

namespace {

QPVEncodedVideoFrame frame(const QByteArray &bytes, quint64 timestamp = 40000)
{
    return QPVEncodedVideoFrame(bytes.constData(), static_cast<unsigned long>(bytes.size()),
                                { QPVEncodedVideoFrame::KeyFrame, timestamp });
}

QString logged(const QPVEncodedVideoFrame &frame)
{
    QString text;
    QDebug(&text) << "a" << frame << "b";
    return text.trimmed();
}

} // namespace

class QpvEncodedVideoFrameTest : public QObject
{
    Q_OBJECT
private slots:
    void emptyFrame_isNotValid()
    {
        const QPVEncodedVideoFrame empty;
        QVERIFY(!empty.isValid());
        QCOMPARE(empty.data(), QByteArray());
        QCOMPARE(int(empty.meta().frameType), 0);
        QCOMPARE(empty.meta().timestamp, quint64(0));
    }

    void frame_isValidWithAtLeastOneByte_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("valid");
        QTest::newRow("one byte") << QByteArray("x") << true;
        QTest::newRow("a zero byte") << QByteArray(1, '\0') << true;
        QTest::newRow("no byte") << QByteArray("") << false;
    }

    void frame_isValidWithAtLeastOneByte()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, valid);
        QCOMPARE(frame(bytes).isValid(), valid);
        QCOMPARE(frame(bytes).data(), bytes);
        QCOMPARE(frame(bytes, 7).meta().timestamp, quint64(7)); // kept in either case
    }

    void nothingAtAll_isNotRead()
    {
        const MetaData meta { QPVEncodedVideoFrame::DeltaFrame, 1 };
        QVERIFY(!QPVEncodedVideoFrame(nullptr, 0, meta).isValid());
        QVERIFY(!QPVEncodedVideoFrame(nullptr, 5, meta).isValid());
        QTest::ignoreMessage(
                QtWarningMsg,
                "QPVEncodedVideoFrame: 4294967296 bytes are more than a frame can hold");
        QVERIFY(!QPVEncodedVideoFrame("x", 4294967296UL, meta).isValid());
    }

    void meta_isKeptAsItIs_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<quint64>("timestamp");
        QTest::newRow("key") << 1 << quint64(0);
        QTest::newRow("delta") << 2 << quint64(40000);
        QTest::newRow("another type, no time") << 77 << ~quint64(0);
    }

    void meta_isKeptAsItIs()
    {
        QFETCH(int, type);
        QFETCH(quint64, timestamp);
        const MetaData meta { static_cast<QPVEncodedVideoFrame::FrameType>(type), timestamp };
        const QPVEncodedVideoFrame made("x", 1, meta);
        QCOMPARE(int(made.meta().frameType), type);
        QCOMPARE(made.meta().timestamp, timestamp);
    }

    void frame_ownsACopyOfTheBytes()
    {
        QByteArray buffer("payload");
        const QPVEncodedVideoFrame made(buffer.data(), 7, {});
        buffer.fill('x');
        QCOMPARE(made.data(), QByteArray("payload"));
    }

    void copies_shareTheBytes()
    {
        const QPVEncodedVideoFrame original = frame("payload");
        QPVEncodedVideoFrame copy(original);
        QCOMPARE(copy.data().constData(), original.data().constData()); // the same memory
        QPVEncodedVideoFrame assigned;
        assigned = copy;
        copy = QPVEncodedVideoFrame();
        QVERIFY(!copy.isValid());
        QCOMPARE(assigned.data().constData(), original.data().constData());
        QCOMPARE(sizeof(QPVEncodedVideoFrame), sizeof(void *));
    }

    void changedBytes_areTheChangersOwn()
    {
        const QPVEncodedVideoFrame original = frame("payload");
        QByteArray bytes = original.data();
        bytes[0] = 'X';
        QCOMPARE(original.data(), QByteArray("payload"));
    }

    void frame_crossesThreadsInAVariant()
    {
        const QVariant variant = QVariant::fromValue(frame("payload"));
        QByteArray bytes;
        std::thread thread(
                [variant, &bytes] { bytes = variant.value<QPVEncodedVideoFrame>().data(); });
        thread.join();
        QCOMPARE(bytes, QByteArray("payload"));
    }

    void log_tellsSizeTypeAndTime()
    {
        QCOMPARE(logged(frame("abc")),
                 QString("a QPVEncodedVideoFrame(3 bytes, type 1, timestamp 40000) b"));
        QCOMPARE(logged(QPVEncodedVideoFrame()), QString("a QPVEncodedVideoFrame() b"));
    }
};

QTEST_GUILESS_MAIN(QpvEncodedVideoFrameTest)
#include "tst_qpvencodedvideoframe.moc"
