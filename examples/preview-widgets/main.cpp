// SPDX-License-Identifier: BSD-3-Clause
// Shows a camera in a window of Qt Widgets. Nothing in here is of Ocelle: with its plugins
// installed, Qt's own classes find its cameras.
#include "numberoption.h"
#include "options.h"

#include <QApplication>
#include <QCamera>
#include <QCameraInfo>
#include <QComboBox>
#include <QCommandLineParser>
#include <QLabel>
#include <QVBoxLayout>
#include <QVideoWidget>

#include <memory>

namespace {

/*! A viewfinder that counts how often it was painted while a camera was on. */
class Viewfinder : public QVideoWidget
{
    Q_OBJECT
public:
    int painted = 0;
    bool isCounting = false;

signals:
    void pictureShown();

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QVideoWidget::paintEvent(event);
        if (!isCounting)
            return;
        ++painted;
        emit pictureShown();
    }
};

class Window : public QWidget
{
    Q_OBJECT
public:
    Window()
    {
        auto *const layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(&m_choice);
        layout->addWidget(&m_viewfinder, 1);
        layout->addWidget(&m_error);
        m_error.setWordWrap(true);
        m_error.hide();
        const QList<QCameraInfo> cameras = QCameraInfo::availableCameras();
        for (const QCameraInfo &camera : cameras)
            m_choice.addItem(camera.description(), camera.deviceName());
        connect(&m_choice, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                &Window::showChosen);
        resize(640, 540);
        showChosen();
    }

    Viewfinder *viewfinder() { return &m_viewfinder; }

signals:
    void failed(const QString &error);

private:
    void showChosen()
    {
        m_error.hide();
        m_viewfinder.isCounting = false;
        m_camera.reset(); // the old one is off before the new one is opened
        if (m_choice.count() == 0) {
            fail(tr("There is no camera. \"ocelle doctor\" tells why."));
            return;
        }
        m_camera = std::make_unique<QCamera>(m_choice.currentData().toByteArray());
        connect(m_camera.get(), &QCamera::errorOccurred, this, [this](QCamera::Error error) {
            if (error != QCamera::NoError) // which is told too, when an error is over
                fail(m_camera->errorString());
        });
        connect(m_camera.get(), &QCamera::statusChanged, this, [this](QCamera::Status status) {
            m_viewfinder.isCounting = status == QCamera::ActiveStatus;
        });
        m_camera->setViewfinder(&m_viewfinder);
        m_camera->start();
    }

    void fail(const QString &error)
    {
        m_error.setText(error);
        m_error.show();
        QMetaObject::invokeMethod(
                this, [this, error] { emit failed(error); }, Qt::QueuedConnection);
    }

    QComboBox m_choice;
    QLabel m_error;
    Viewfinder m_viewfinder;
    std::unique_ptr<QCamera> m_camera; // after its viewfinder, so that it goes before it
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser options;
    options.addOption({ "frames", "End after N pictures.", "N" });
    options.addOption({ "snapshot", "Save what is shown at the end.", "FILE.png" });
    readOptions(&options, 0);
    const int frames = options.isSet("frames") ? numberOption(options, "frames") : 0;

    Window window;
    if (frames > 0) { // nobody is there to read what the window says
        QObject::connect(&window, &Window::failed, [](const QString &error) {
            qCritical("%s", qPrintable(error));
            QCoreApplication::exit(1);
        });
        QObject::connect(
                window.viewfinder(), &Viewfinder::pictureShown, &window,
                [&] {
                    if (window.viewfinder()->painted == frames)
                        QCoreApplication::quit();
                },
                Qt::QueuedConnection);
    }
    window.show();
    const int result = application.exec();
    if (result == 0 && options.isSet("snapshot") &&
        !window.viewfinder()->grab().save(options.value("snapshot"))) {
        qCritical("%s cannot be written", qPrintable(options.value("snapshot")));
        return 1;
    }
    return result;
}

#include "main.moc"
