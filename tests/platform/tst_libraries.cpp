// SPDX-License-Identifier: BSD-3-Clause
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

namespace {

QString output(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0)
        qWarning() << program << arguments << process.errorString() << process.readAll();
    return QString::fromLocal8Bit(process.readAll());
}

QStringList matches(const QString &text, const char *pattern)
{
    QStringList result;
    auto each = QRegularExpression(QLatin1String(pattern), QRegularExpression::MultilineOption)
                        .globalMatch(text);
    while (each.hasNext())
        result.append(each.next().captured(1));
    result.sort();
    return result;
}

QString dynamicSection(const char *file)
{
    return output(OCELLE_READELF, { "-W", "-d", file });
}

QStringList soname(const char *file)
{
    return matches(dynamicSection(file), "\\(SONAME\\).*\\[(.*)\\]");
}

QStringList needed(const char *file)
{
    return matches(dynamicSection(file), "\\(NEEDED\\).*\\[(.*)\\]");
}

/*! Names that others can link to; code, data and weak ones alike. */
QStringList exported(const char *file, bool demangled)
{
    QStringList arguments { "-D", "--defined-only", "--format=posix", file };
    if (demangled)
        arguments.prepend("-C");
    return matches(output(OCELLE_NM, arguments), "^(.+) [A-TV-Za-z] [0-9a-f]+( [0-9a-f]*)?$");
}

QStringList undefined(const char *file)
{
    return matches(output(OCELLE_NM, { "-C", "-D", "--undefined-only", "--format=posix", file }),
                   "^(.+) [Uvw] *$");
}

/*! What the compiler's sanitizers bring along where a build uses them. */
bool isSanitizers(const QString &library)
{
    return library.contains(QRegularExpression("^lib([atl]|ub|hwa)san\\.so\\."));
}

const QStringList &platformSonames()
{
    static const QStringList names { "libQt5Palaver.so.0", "libocelle-qt5.so.0", "libocelle.so.0" };
    return names;
}

} // namespace

class TestLibraries : public QObject
{
    Q_OBJECT
private slots:
    void plugin_isCalledLibocellebackend_inTheMediaserviceFolder()
    {
        const QFileInfo plugin(OCELLE_PLUGIN_FILE);
        QCOMPARE(plugin.fileName(), QString("libocellebackend.so"));
        QCOMPARE(plugin.dir().dirName(), QString("mediaservice"));
    }

    void plugin_exportsTheTwoPluginFunctionsAndNothingElse()
    {
        QCOMPARE(exported(OCELLE_PLUGIN_FILE, false),
                 (QStringList { "qt_plugin_instance", "qt_plugin_query_metadata" }));
    }

    void plugin_needsTheThreePlatformLibrariesBesideQtAndTheRuntime()
    {
        const QRegularExpression runtime("^(libQt5(Core|Gui|Multimedia)\\.so\\.5"
                                         "|libstdc\\+\\+\\.so\\.6|libgcc_s\\.so\\.1|libc\\.so\\.6"
                                         "|libm\\.so\\.6|ld-linux-.*)$");
        QStringList rest;
        for (const QString &library : needed(OCELLE_PLUGIN_FILE)) {
            if (!runtime.match(library).hasMatch() && !isSanitizers(library))
                rest.append(library);
        }
        QCOMPARE(rest, platformSonames());
    }

    void plugin_findsEverySymbolInWhatItNeeds()
    {
        QStringList unresolved;
        const QString report = output("ldd", { "-r", OCELLE_PLUGIN_FILE });
        QVERIFY2(report.contains("libQt5Core.so.5 =>"), qPrintable(report));
        QVERIFY2(!report.contains("not found"), qPrintable(report));
        for (const QString &symbol : matches(report, "undefined symbol: (\\S+)")) {
            if (!symbol.contains(QRegularExpression("^__([atl]|ub|hwa)san_")))
                unresolved.append(symbol);
        }
        QCOMPARE(unresolved, QStringList());
    }

    void plugin_asksThePlatformOnlyForWhatTheContractNames()
    {
        const QRegularExpression ofPlatform("Veltra::Ocelle|\\bQPV|^Ocelle");
        // What checks the type behind every pointer asks for that type, too.
        const QRegularExpression ofSanitizer("^typeinfo for Veltra::Ocelle::[A-Za-z0-9]+$");
        const QRegularExpression inContract(
                "^(OcelleManager|OcelleCodecManager"
                "|((typeinfo|vtable) for )?Veltra::Ocelle::"
                "(Camera|CameraManager|VideoDecoder|VideoEncoder)Listener(::~.*)?"
                "|Veltra::Ocelle::Video(De|En)coder::lockAndSetListener\\(.*"
                "|Veltra::Ocelle::VideoOutputQt5::(VideoOutputQt5|~VideoOutputQt5|videoSurface"
                "|setVideoSurface|setViewport|setMirrored|stop|onGraphicBuffer|onVideoFrame)\\(.*"
                "|((typeinfo|vtable) for "
                ")?QPV(Decoder|Encoder|EncodedVideoFrame|DecodeControl|EncodeControl"
                "|Source|Sink|EncodedVideoSink|EncodedVideoSourceControl|RawVideoSourceControl"
                "|MediaServiceCodecInfoInterface)(::.*)?"
                "|operator<<\\(QDebug, QPVEncodedVideoFrame const&\\))$");
        const QStringList symbols = undefined(OCELLE_PLUGIN_FILE);
        const bool sanitized = !symbols.filter(QRegularExpression("^__ubsan_")).isEmpty();
        QStringList asked;
        QStringList strange;
        for (const QString &symbol : symbols) {
            if (!ofPlatform.match(symbol).hasMatch() ||
                (sanitized && ofSanitizer.match(symbol).hasMatch()))
                continue;
            asked.append(symbol);
            if (!inContract.match(symbol).hasMatch())
                strange.append(symbol);
        }
        QVERIFY2(asked.contains("OcelleManager"), qPrintable(asked.join('\n')));
        QCOMPARE(strange, QStringList());
    }

    void platformLibraries_haveTheirSonames_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("name");
        QTest::newRow("camera library")
                << QByteArray(OCELLE_CAMERA_LIBRARY_FILE) << "libocelle.so.0";
        QTest::newRow("output library")
                << QByteArray(OCELLE_OUTPUT_LIBRARY_FILE) << "libocelle-qt5.so.0";
        QTest::newRow("exchange library")
                << QByteArray(OCELLE_EXCHANGE_LIBRARY_FILE) << "libQt5Palaver.so.0";
    }

    void platformLibraries_haveTheirSonames()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, name);
        QCOMPARE(soname(file.constData()), QStringList(name));
    }

    void cameraLibrary_needsNoQt()
    {
        const QStringList libraries = needed(OCELLE_CAMERA_LIBRARY_FILE);
        QVERIFY(libraries.contains("libstdc++.so.6"));
        QCOMPARE(libraries.filter("Qt"), QStringList());
    }

    void cameraLibrary_exportsTheContract()
    {
        const QStringList names = exported(OCELLE_CAMERA_LIBRARY_FILE, true);
        QStringList missing;
        for (const char *name :
             { "OcelleManager", "OcelleCodecManager", "Veltra::Ocelle::CameraManager::reserved3()",
               "Veltra::Ocelle::CameraManager::reserved8()",
               "Veltra::Ocelle::CameraManager::reserved9()",
               "Veltra::Ocelle::CameraManager::reserved10()", "Veltra::Ocelle::Camera::reserved8()",
               "Veltra::Ocelle::Camera::reserved9()", "Veltra::Ocelle::Camera::reserved10()",
               "Veltra::Ocelle::VideoDecoder::reserved4()",
               "Veltra::Ocelle::VideoDecoder::lockAndSetListener("
               "Veltra::Ocelle::VideoDecoderListener*)",
               "Veltra::Ocelle::VideoEncoder::lockAndSetListener("
               "Veltra::Ocelle::VideoEncoderListener*)" }) {
            if (!names.contains(QLatin1String(name)))
                missing.append(name);
        }
        for (const char *name :
             { "CameraManager", "CameraManagerListener", "Camera", "CameraListener", "CodecManager",
               "VideoDecoder", "VideoDecoderListener", "VideoEncoder", "VideoEncoderListener" }) {
            const QString type = QStringLiteral("Veltra::Ocelle::") + QLatin1String(name);
            for (const QString &symbol : { "vtable for " + type, "typeinfo for " + type,
                                           type + "::~" + QLatin1String(name) + "()" }) {
                if (!names.contains(symbol))
                    missing.append(symbol);
            }
        }
        QCOMPARE(missing, QStringList());
    }

    void outputLibrary_exportsTheContract()
    {
        const QStringList names = exported(OCELLE_OUTPUT_LIBRARY_FILE, true);
        QStringList missing;
        for (const char *name :
             { "VideoOutputQt5(QObject*)", "~VideoOutputQt5()", "videoSurface() const",
               "setVideoSurface(QAbstractVideoSurface*)", "setViewport(QRect)", "setMirrored(bool)",
               "stop()", "onGraphicBuffer(std::shared_ptr<Veltra::Ocelle::GraphicBuffer>)",
               "onVideoFrame(Veltra::Ocelle::YCbCrFrame const*)", "staticMetaObject" }) {
            const QString symbol =
                    QStringLiteral("Veltra::Ocelle::VideoOutputQt5::") + QLatin1String(name);
            if (!names.contains(symbol))
                missing.append(symbol);
        }
        QCOMPARE(missing, QStringList());
    }

    void exchangeLibrary_exportsTheContract()
    {
        const QStringList names = exported(OCELLE_EXCHANGE_LIBRARY_FILE, true);
        QStringList missing;
        for (const char *name :
             { "QPVRawVideoSourceControl", "QPVMediaServiceCodecInfoInterface", "QPVDecoder",
               "QPVEncoder", "QPVDecodeControl", "QPVEncodeControl", "QPVSource", "QPVSink",
               "QPVEncodedVideoSink", "QPVEncodedVideoSourceControl" }) {
            const QString type = QLatin1String(name);
            for (const QString &symbol :
                 { "vtable for " + type, "typeinfo for " + type, type + "::~" + type + "()" }) {
                if (!names.contains(symbol))
                    missing.append(symbol);
            }
        }
        for (const char *name :
             { "QPVRawVideoSourceControl::staticMetaObject",
               "QPVDecoder::staticMetaObject",
               "QPVEncoder::staticMetaObject",
               "QPVDecodeControl::staticMetaObject",
               "QPVEncodeControl::staticMetaObject",
               "QPVEncodedVideoSourceControl::staticMetaObject",
               "QPVEncodeControl::statusChanged(QPVEncoder::Status)",
               "QPVEncodeControl::error(QPVEncoder::Error, QString const&)",
               "QPVEncodeControl::encodedVideoFrame(QPVEncodedVideoFrame)",
               "QPVEncodeControl::endOfStream()",
               "QPVDecodeControl::statusChanged(QPVDecoder::Status)",
               "QPVDecodeControl::error(QPVDecoder::Error, QString const&)",
               "QPVDecodeControl::outputFormatChanged(QVideoSurfaceFormat const&)",
               "QPVSource::sinkActiveChanged(QPVSink*, bool)",
               "QPVSource::sinkError(QPVSink*)",
               "QPVEncodedVideoFrame::QPVEncodedVideoFrame()",
               "QPVEncodedVideoFrame::QPVEncodedVideoFrame(char const*, unsigned long, "
               "QPVEncodedVideoFrame::MetaData const&)",
               "QPVEncodedVideoFrame::QPVEncodedVideoFrame(QPVEncodedVideoFrame const&)",
               "QPVEncodedVideoFrame::operator=(QPVEncodedVideoFrame const&)",
               "QPVEncodedVideoFrame::~QPVEncodedVideoFrame()",
               "QPVEncodedVideoFrame::data() const",
               "QPVEncodedVideoFrame::meta() const",
               "QPVEncodedVideoFrame::isValid() const",
               "operator<<(QDebug, QPVEncodedVideoFrame const&)" }) {
            if (!names.contains(QLatin1String(name)))
                missing.append(name);
        }
        QCOMPARE(missing, QStringList());
    }

    void platformLibraries_exportNothingForeign_data()
    {
        platformLibraries_haveTheirSonames_data();
    }

    void platformLibraries_exportNothingForeign()
    {
        QFETCH(QByteArray, file);
        // Templates of the standard library and of Qt are everybody's; they come out weak.
        const QRegularExpression own(
                "Veltra::Ocelle::|^Ocelle|\\bQPV|^std::|^(vtable|typeinfo|"
                "typeinfo name|VTT|guard variable) for "
                "(std::|QtPrivate::|__gnu_cxx::|__cxxabiv1::)|"
                "\\bstd::|__gnu_cxx::|QtPrivate::|QMetaTypeId|QtMetaTypePrivate|"
                "^(__bss_start|_edata|_end)$"); // the linker's own
        QStringList foreign;
        for (const QString &symbol : exported(file.constData(), true)) {
            if (!own.match(symbol).hasMatch())
                foreign.append(symbol);
        }
        QCOMPARE(foreign, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestLibraries)
#include "tst_libraries.moc"
