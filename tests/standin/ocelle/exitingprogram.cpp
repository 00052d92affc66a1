// SPDX-License-Identifier: BSD-3-Clause
// Ends with a camera streaming and the folder of a source being watched, as an application may that
// leaves by exit(). Nothing of the library may crash, hang or count as leaked then.

#include <ocelle/camera.h>
#include <ocelle/cameramanager.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>

namespace {

class Listener : public Veltra::Ocelle::CameraListener
{
public:
    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer>) override { ++pictures; }
    void onCameraError(const std::string &) override {}
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter, const std::string &) override {}

    std::atomic<int> pictures { 0 };
};

} // namespace

int main()
{
    setenv("OCELLE_CAMERAS", "pattern,dir:/", 1);
    // Never destroyed, so that they stay good for the capture thread until the very end.
    static Listener *const listener = new Listener;
    static auto *const camera = new std::shared_ptr<Veltra::Ocelle::Camera>(
            OcelleManager()->openCamera("pattern:back"));
    (*camera)->setListener(listener);
    if (!(*camera)->startCapture({ 320, 240, 60 }, 255))
        return 1;
    while (listener->pictures < 3)
        std::this_thread::yield();
    return 0;
}
