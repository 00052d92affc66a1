// SPDX-License-Identifier: BSD-3-Clause
#include "settingschoice.h"

#include <QtTest>

using namespace Tool;

class SettingsChoiceTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void takesTheFirst_whenNothingIsAskedFor();
    void takesTheFirstThatFits_data();
    void takesTheFirstThatFits();
    void namesTheNearest_whenNotOffered_data();
    void namesTheNearest_whenNotOffered();
    void says_whenThereIsNothingAtAll();

private:
    void offer(QSize size, double rate)
    {
        QCameraViewfinderSettings settings;
        settings.setResolution(size);
        settings.setMinimumFrameRate(rate);
        settings.setMaximumFrameRate(rate);
        settings.setPixelFormat(QVideoFrame::Format_NV12);
        m_offered.append(settings);
    }

    QList<QCameraViewfinderSettings> m_offered;
};

Q_DECLARE_METATYPE(std::optional<QSize>)
Q_DECLARE_METATYPE(std::optional<double>)

void SettingsChoiceTest::init()
{
    m_offered.clear();
    for (const QSize size : { QSize(640, 480), QSize(1280, 720), QSize(320, 240) }) {
        for (const double rate : { 30.0, 60.0 })
            offer(size, rate);
    }
    offer(QSize(1280, 720), 15.0);
}

void SettingsChoiceTest::takesTheFirst_whenNothingIsAskedFor()
{
    QString error;
    const auto choice = chooseSettings(m_offered, {}, {}, &error);
    QVERIFY(choice.has_value());
    QCOMPARE(*choice, m_offered.first());
    QVERIFY(error.isEmpty());
}

void SettingsChoiceTest::takesTheFirstThatFits_data()
{
    QTest::addColumn<std::optional<QSize>>("size");
    QTest::addColumn<std::optional<double>>("rate");
    QTest::addColumn<int>("index");
    QTest::newRow("size") << std::optional(QSize(1280, 720)) << std::optional<double>() << 2;
    QTest::newRow("rate") << std::optional<QSize>() << std::optional(60.0) << 1;
    QTest::newRow("rare rate") << std::optional<QSize>() << std::optional(15.0) << 6;
    QTest::newRow("both") << std::optional(QSize(320, 240)) << std::optional(60.0) << 5;
}

void SettingsChoiceTest::takesTheFirstThatFits()
{
    QFETCH(std::optional<QSize>, size);
    QFETCH(std::optional<double>, rate);
    QFETCH(int, index);
    QString error;
    const auto choice = chooseSettings(m_offered, size, rate, &error);
    QVERIFY(choice.has_value());
    QCOMPARE(*choice, m_offered.at(index));
}

void SettingsChoiceTest::namesTheNearest_whenNotOffered_data()
{
    QTest::addColumn<std::optional<QSize>>("size");
    QTest::addColumn<std::optional<double>>("rate");
    QTest::addColumn<QString>("error");
    QTest::newRow("size") << std::optional(QSize(800, 600)) << std::optional<double>()
                          << "size 800x600 is not offered; the nearest are 640x480 and 1280x720";
    QTest::newRow("size, with a rate")
            << std::optional(QSize(10, 10)) << std::optional(30.0)
            << "size 10x10 is not offered; the nearest are 320x240 and 640x480";
    QTest::newRow("rate") << std::optional<QSize>() << std::optional(25.0)
                          << "25 fps is not offered; the nearest are 30 and 15 fps";
    QTest::newRow("rate at a size")
            << std::optional(QSize(320, 240)) << std::optional(15.0)
            << "15 fps is not offered at 320x240; the nearest are 30 and 60 fps";
}

void SettingsChoiceTest::namesTheNearest_whenNotOffered()
{
    QFETCH(std::optional<QSize>, size);
    QFETCH(std::optional<double>, rate);
    QFETCH(QString, error);
    QString told;
    QVERIFY(!chooseSettings(m_offered, size, rate, &told).has_value());
    QCOMPARE(told, error);
}

void SettingsChoiceTest::says_whenThereIsNothingAtAll()
{
    QString error;
    QVERIFY(!chooseSettings({}, {}, {}, &error).has_value());
    QCOMPARE(error, QStringLiteral("no pictures are offered"));
    m_offered = m_offered.mid(0, 1);
    QVERIFY(!chooseSettings(m_offered, QSize(1, 1), {}, &error).has_value());
    QCOMPARE(error, QStringLiteral("size 1x1 is not offered; the nearest is 640x480"));
}

QTEST_GUILESS_MAIN(SettingsChoiceTest)
#include "tst_settingschoice.moc"
