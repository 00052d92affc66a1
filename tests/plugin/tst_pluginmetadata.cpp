// SPDX-License-Identifier: BSD-3-Clause
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>
#include <QtTest>

#include <dlfcn.h>

class TestPluginMetadata : public QObject
{
    Q_OBJECT
private slots:
    void metadata_isReadWithoutLoadingTheCode()
    {
        QPluginLoader loader(OCELLE_PLUGIN_FILE);
        QVERIFY(!loader.metaData().isEmpty());
        QVERIFY(!loader.isLoaded());
        QVERIFY(!dlopen(OCELLE_PLUGIN_FILE, RTLD_NOLOAD | RTLD_LAZY));
    }

    void metadata_namesInterfaceClassAndVersion()
    {
        const QJsonObject metadata = QPluginLoader(OCELLE_PLUGIN_FILE).metaData();
        QCOMPARE(metadata.value("IID").toString(),
                 QString("org.qt-project.qt.mediaserviceproviderfactory/5.0"));
        QCOMPARE(metadata.value("className").toString(), QString("OcelleServicePlugin"));
        // Newer versions of Qt keep only the major and the minor number in a plugin.
        QCOMPARE(metadata.value("version").toInt() & 0xFFFF00, QT_VERSION & 0xFFFF00);
#ifdef QT_NO_DEBUG
        QCOMPARE(metadata.value("debug").toBool(true), false);
#else
        QCOMPARE(metadata.value("debug").toBool(false), true);
#endif
    }

    void metadata_hasExactlyKeysAndServices()
    {
        const QJsonObject metadata =
                QPluginLoader(OCELLE_PLUGIN_FILE).metaData().value("MetaData").toObject();
        QCOMPARE(metadata.keys(), (QStringList { "Keys", "Services" }));
        QCOMPARE(metadata.value("Keys").toArray(), QJsonArray { "ocelle" });
        QCOMPARE(metadata.value("Services").toArray(),
                 (QJsonArray { "veltra.palaver.camera", "veltra.palaver.encoder",
                               "veltra.palaver.decoder" }));
    }
};

QTEST_GUILESS_MAIN(TestPluginMetadata)
#include "tst_pluginmetadata.moc"
