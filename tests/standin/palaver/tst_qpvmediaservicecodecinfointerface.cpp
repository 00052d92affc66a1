// SPDX-License-Identifier: BSD-3-Clause
#include <QtTest>

#include <palaver/qpvmediaservicecodecinfointerface.h>

#include <memory>

namespace {

class Provider : public QObject, public QPVMediaServiceCodecInfoInterface
{
    Q_OBJECT
    Q_INTERFACES(QPVMediaServiceCodecInfoInterface)
public:
    explicit Provider(bool *destroyed)
        : m_destroyed(destroyed)
    {
    }
    ~Provider() override { *m_destroyed = true; }
    QString codecType(const QByteArray &codec) const override { return QString::fromUtf8(codec); }
    bool codecIsEncoder(const QByteArray &) const override { return true; }
    bool codecIsHardwareAccelerated(const QByteArray &) const override { return false; }
    int codecMaxInstances(const QByteArray &) const override { return 3; }

private:
    bool *const m_destroyed;
};

} // namespace

class QpvMediaServiceCodecInfoInterfaceTest : public QObject
{
    Q_OBJECT
private slots:
    void isFoundOnAnObjectByItsId();
    void deletesTheObjectBehindIt();
};

void QpvMediaServiceCodecInfoInterfaceTest::isFoundOnAnObjectByItsId()
{
    bool destroyed = false;
    Provider provider(&destroyed);
    QObject *plain = &provider;
    QVERIFY(plain->qt_metacast("veltra.palaver.mediaservicecodecinfo/1.0") != nullptr);
    auto *interface = qobject_cast<QPVMediaServiceCodecInfoInterface *>(plain);
    QCOMPARE(interface, &provider);
    QCOMPARE(interface->codecType("video/x"), QStringLiteral("video/x"));
    QVERIFY(interface->codecIsEncoder("x"));
    QVERIFY(!interface->codecIsHardwareAccelerated("x"));
    QCOMPARE(interface->codecMaxInstances("x"), 3);
}

void QpvMediaServiceCodecInfoInterfaceTest::deletesTheObjectBehindIt()
{
    bool destroyed = false;
    std::unique_ptr<QPVMediaServiceCodecInfoInterface> interface =
            std::make_unique<Provider>(&destroyed);
    interface.reset();
    QVERIFY(destroyed);
}

QTEST_GUILESS_MAIN(QpvMediaServiceCodecInfoInterfaceTest)
#include "tst_qpvmediaservicecodecinfointerface.moc"
