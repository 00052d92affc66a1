// SPDX-License-Identifier: BSD-3-Clause
#include <QMetaEnum>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

#include <palaver/qpvdecodecontrol.h>
#include <palaver/qpvencodecontrol.h>
#include <palaver/qpvencodedvideosink.h>
#include <palaver/qpvencodedvideosourcecontrol.h>

#include <memory>

namespace {

class EncodeControl : public QPVEncodeControl
{
public:
    explicit EncodeControl(QObject *parent = nullptr)
        : QPVEncodeControl(parent)
    {
    }
    QStringList supportedCodecs(bool) const override { return {}; }
    QList<QVideoFrame::PixelFormat> supportedPixelFormats() const override { return {}; }
    QPVEncoder::Status status() const override { return QPVEncoder::UnloadedStatus; }
    bool start(const QVideoSurfaceFormat &) override { return false; }
    void drain() override {}
    void flush() override {}
    void stop() override {}
    bool encode(const QVideoFrame &) override { return false; }
};

class DecodeControl : public QPVDecodeControl
{
public:
    explicit DecodeControl(QObject *parent = nullptr)
        : QPVDecodeControl(parent)
    {
    }
    QStringList supportedCodecs(bool) const override { return {}; }
    bool isFormatSupported(const QVideoEncoderSettings &) const override { return false; }
    bool start(const QVideoEncoderSettings &) override { return false; }
    QVideoEncoderSettings codecSettings() const override { return {}; }
    QVideoSurfaceFormat outputFormat() const override { return {}; }
    bool decode(const QPVEncodedVideoFrame &) override { return false; }
    void drain() override {}
    void flush() override {}
    void stop() override {}
    QPVDecoder::Status status() const override { return QPVDecoder::UnloadedStatus; }
};

class SourceControl : public QPVEncodedVideoSourceControl
{
public:
    explicit SourceControl(QObject *parent = nullptr)
        : QPVEncodedVideoSourceControl(parent)
    {
    }
    bool addSink(QPVSink *sink) override { return sink; }
    bool removeSink(QPVSink *) override { return false; }
};

class Sink : public QPVEncodedVideoSink
{
public:
    explicit Sink(bool *destroyed)
        : m_destroyed(destroyed)
    {
    }
    ~Sink() override { *m_destroyed = true; }
    void release() override {}
    bool isFormatSupported(const QVideoEncoderSettings &) override { return true; }
    bool start(const QVideoEncoderSettings &) override { return true; }
    void present(const QPVEncodedVideoFrame &) override {}
    void finish() override {}
    void stop() override {}

private:
    bool *const m_destroyed;
};

const char *key(const QMetaObject &type, const char *enumerator, int value)
{
    return type.enumerator(type.indexOfEnumerator(enumerator)).valueToKey(value);
}

} // namespace

class QpvCodecControlsTest : public QObject
{
    Q_OBJECT
private slots:
    void controls_registerWhatTheirSignalsCarry_data()
    {
        QTest::addColumn<QByteArray>("type");
        for (const char *type : { "QPVEncodedVideoFrame", "QPVEncoder::Error", "QPVDecoder::Error",
                                  "QVideoSurfaceFormat" })
            QTest::newRow(type) << QByteArray(type);
    }

    void controls_registerWhatTheirSignalsCarry()
    {
        QFETCH(QByteArray, type);
        const EncodeControl encode;
        const DecodeControl decode;
        QVERIFY(QMetaType::type(type) != QMetaType::UnknownType);
    }

    void controls_areFoundByTheirInterfaceIds()
    {
        QCOMPARE(qmediacontrol_iid<QPVEncodeControl *>(), "veltra.palaver.encodecontrol/1.0");
        QCOMPARE(qmediacontrol_iid<QPVDecodeControl *>(), "veltra.palaver.decodecontrol/1.0");
        QCOMPARE(qmediacontrol_iid<QPVEncodedVideoSourceControl *>(),
                 "veltra.palaver.encodedvideosourcecontrol/1.0");
        EncodeControl encode;
        QMediaControl *plain = &encode;
        QCOMPARE(qobject_cast<QPVEncodeControl *>(plain), &encode);
        QCOMPARE(qobject_cast<QPVDecodeControl *>(plain), nullptr);
    }

    void controls_goWithTheirParents()
    {
        QPointer<QObject> controls[3];
        {
            QObject parent;
            controls[0] = new EncodeControl(&parent);
            controls[1] = new DecodeControl(&parent);
            controls[2] = new SourceControl(&parent);
        }
        for (const QPointer<QObject> &control : controls)
            QVERIFY(control.isNull());
    }

    void signals_reachSlotsOnOtherThreadsQueued()
    {
        EncodeControl encode;
        DecodeControl decode;
        QList<int> errors;
        QByteArray data;
        connect(
                &encode, &QPVEncodeControl::error, this,
                [&](QPVEncoder::Error error, const QString &) { errors.append(error); },
                Qt::QueuedConnection);
        connect(
                &decode, &QPVDecodeControl::error, this,
                [&](QPVDecoder::Error error, const QString &) { errors.append(error); },
                Qt::QueuedConnection);
        connect(
                &encode, &QPVEncodeControl::encodedVideoFrame, this,
                [&](const QPVEncodedVideoFrame &frame) { data = frame.data(); },
                Qt::QueuedConnection);
        emit encode.error(QPVEncoder::SinkError, QString());
        emit decode.error(QPVDecoder::DecodeError, QString());
        emit encode.encodedVideoFrame(QPVEncodedVideoFrame("abc", 3, {}));
        QCOMPARE(errors, QList<int>());
        QTRY_COMPARE(errors, (QList<int> { 3, 3 }));
        QCOMPARE(data, QByteArray("abc"));
    }

    void enumerators_haveTheirNames()
    {
        const QMetaObject &encode = QPVEncoder::staticMetaObject;
        QCOMPARE(key(encode, "Status", 1), "UnloadedStatus");
        QCOMPARE(key(encode, "Status", 3), "LoadedStatus");
        QCOMPARE(key(encode, "Status", 4), "StoppingStatus");
        QCOMPARE(key(encode, "Status", 5), "StartingStatus");
        QCOMPARE(key(encode, "Status", 6), "ActiveStatus");
        QCOMPARE(key(encode, "Error", 0), "NoError");
        QCOMPARE(key(encode, "Error", 1), "ResourceError");
        QCOMPARE(key(encode, "Error", 2), "FormatError");
        QCOMPARE(key(encode, "Error", 3), "SinkError");
        QCOMPARE(key(encode, "Error", 4), "EncoderError");
        const QMetaObject &decode = QPVDecoder::staticMetaObject;
        QCOMPARE(key(decode, "Status", 1), "UnloadedStatus");
        QCOMPARE(key(decode, "Status", 4), "LoadedStatus");
        QCOMPARE(key(decode, "Status", 5), "StandbyStatus");
        QCOMPARE(key(decode, "Status", 6), "StoppingStatus");
        QCOMPARE(key(decode, "Status", 7), "StartingStatus");
        QCOMPARE(key(decode, "Status", 8), "ActiveStatus");
        QCOMPARE(key(decode, "Error", 0), "NoError");
        QCOMPARE(key(decode, "Error", 1), "ResourceError");
        QCOMPARE(key(decode, "Error", 3), "DecodeError");
        const QPVEncoder encoder(this);
        const QPVDecoder decoder(this);
        QCOMPARE(encoder.parent(), this);
        QCOMPARE(decoder.parent(), this);
    }

    void source_ignoresWhatItsSinksTell()
    {
        SourceControl control;
        QPVSource *source = &control;
        bool destroyed = false;
        Sink sink(&destroyed);
        source->sinkActiveChanged(&sink, true);
        source->sinkError(nullptr);
        QVERIFY(source->addSink(&sink));
    }

    void sink_isFoundBehindItsBase()
    {
        bool destroyed = false;
        std::unique_ptr<QPVSink> sink = std::make_unique<Sink>(&destroyed);
        QVERIFY(dynamic_cast<QPVEncodedVideoSink *>(sink.get()));
        sink.reset();
        QVERIFY(destroyed);
    }
};

QTEST_GUILESS_MAIN(QpvCodecControlsTest)
#include "tst_qpvcodeccontrols.moc"
