// SPDX-License-Identifier: BSD-3-Clause
// A stranger's program that uses all three libraries: lists the cameras, makes a video output and
// knows the raw video source control.
#include <QCoreApplication>

#include <ocelle/cameramanager.h>
#include <ocelle/videooutputqt5.h>
#include <palaver/qpvrawvideosourcecontrol.h>

#include <iostream>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Veltra::Ocelle::CameraManager *const manager = OcelleManager();
    const int count = manager->getNumberOfCameras();
    for (int i = 0; i < count; ++i) {
        Veltra::Ocelle::CameraInfo info;
        if (manager->getCameraInfo(i, info))
            std::cout << "camera " << info.id << std::endl;
    }
    const Veltra::Ocelle::VideoOutputQt5 output;
    const char *const control = QPVRawVideoSourceControl::staticMetaObject.className();
    std::cout << "control " << control << std::endl;
    return output.videoSurface() == nullptr && count > 0 ? 0 : 1;
}
