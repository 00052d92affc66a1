// SPDX-License-Identifier: BSD-3-Clause
// The parts of the platform's interfaces that live in this library: destructors, with which the
// virtual tables and the type information come, and the operations that nobody uses.

#include <ocelle/camera.h>
#include <ocelle/cameramanager.h>
#include <ocelle/codecmanager.h>

namespace Veltra {
namespace Ocelle {

CameraManagerListener::~CameraManagerListener() = default;

CameraManager::~CameraManager() = default;
void CameraManager::reserved3() {}
void CameraManager::reserved8() {}
void CameraManager::reserved9() {}
void CameraManager::reserved10() {}

CameraListener::~CameraListener() = default;

Camera::~Camera() = default;
void Camera::reserved8() {}
void Camera::reserved9() {}
void Camera::reserved10() {}

CodecManager::~CodecManager() = default;

} // namespace Ocelle
} // namespace Veltra
