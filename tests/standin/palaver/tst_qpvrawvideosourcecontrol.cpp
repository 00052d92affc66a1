// SPDX-License-Identifier: BSD-3-Clause
#include <QAbstractVideoSurface>
#include <QPointer>
#include <QVideoSurfaceFormat>
#include <QtTest>

#include <palaver/qpvrawvideosourcecontrol.h>

namespace {

class Control : public QPVRawVideoSourceControl
{
public:
    explicit Control(QObject *parent = nullptr)
        : QPVRawVideoSourceControl(parent)
    {
    }
    QAbstractVideoSurface *surface() const override { return m_surface; }
    void setSurface(QAbstractVideoSurface *surface) override { m_surface = surface; }

private:
    QAbstractVideoSurface *m_surface = nullptr;
};

} // namespace

class QpvRawVideoSourceControlTest : public QObject
{
    Q_OBJECT
private slots:
    void construction_registersTheSurfaceFormatAsMetaType();
    void isFoundUnderItsInterfaceId();
    void isARendererControlOfItsParent();
};

// Qt 5.15 happens to register it as well; other versions leave it to us.
void QpvRawVideoSourceControlTest::construction_registersTheSurfaceFormatAsMetaType()
{
    const Control control;
    QVERIFY(QMetaType::type("QVideoSurfaceFormat") != QMetaType::UnknownType);
}

void QpvRawVideoSourceControlTest::isFoundUnderItsInterfaceId()
{
    QCOMPARE(qmediacontrol_iid<QPVRawVideoSourceControl *>(),
             "veltra.palaver.rawvideosourcecontrol/1.0");
    Control control;
    QMediaControl *plain = &control;
    QCOMPARE(qobject_cast<QPVRawVideoSourceControl *>(plain), &control);
    QCOMPARE(control.metaObject()->className(), "QPVRawVideoSourceControl");
}

void QpvRawVideoSourceControlTest::isARendererControlOfItsParent()
{
    QPointer<QVideoRendererControl> watched;
    {
        QObject parent;
        auto *control = new Control(&parent);
        watched = control;
        QCOMPARE(control->parent(), &parent);
        QCOMPARE(control->surface(), nullptr);
    }
    QVERIFY(watched.isNull());
}

QTEST_GUILESS_MAIN(QpvRawVideoSourceControlTest)
#include "tst_qpvrawvideosourcecontrol.moc"
