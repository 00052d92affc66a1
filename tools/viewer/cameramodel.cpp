// SPDX-License-Identifier: BSD-3-Clause
#include "cameramodel.h"

#include "backendplugin.h"
#include "cameralist.h"

namespace Viewer {
namespace {
constexpr int Interval = 250; // ms
} // namespace

CameraModel::CameraModel(QObject *parent)
    : QAbstractListModel(parent)
    , m_cameras(Tool::availableCameras())
{
    connect(&m_timer, &QTimer::timeout, this, &CameraModel::look);
    m_timer.start(Interval);
}

int CameraModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_cameras.size();
}

QVariant CameraModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return QVariant();
    const QCameraInfo &camera = m_cameras.at(index.row());
    if (role == IdRole)
        return camera.deviceName();
    return role == NameRole || role == Qt::DisplayRole ? camera.description() : QVariant();
}

QHash<int, QByteArray> CameraModel::roleNames() const
{
    return { { IdRole, "cameraId" }, { NameRole, "name" } };
}

QString CameraModel::idAt(int row) const
{
    return row >= 0 && row < m_cameras.size() ? m_cameras.at(row).deviceName() : QString();
}

QString CameraModel::nameOf(const QString &id) const
{
    const int row = indexOf(id);
    return row < 0 ? QString() : m_cameras.at(row).description();
}

int CameraModel::indexOf(const QString &id) const
{
    for (int row = 0; row < m_cameras.size(); ++row) {
        if (m_cameras.at(row).deviceName() == id)
            return row;
    }
    return -1;
}

QString CameraModel::preferred() const
{
    const QString id = QCameraInfo::defaultCamera().deviceName();
    return indexOf(id) >= 0 ? id : idAt(0);
}

QString CameraModel::find(const QString &text) const
{
    return Tool::findCamera(text).deviceName();
}

QString CameraModel::problem(const QString &text) const
{
    return Tool::noSuchCamera(text);
}

QString CameraModel::trouble() const
{
    QString error;
    if (m_cameras.isEmpty() && !Tool::backendPlugin(&error))
        return error;
    return QString();
}

void CameraModel::look()
{
    const QList<QCameraInfo> present = Tool::availableCameras();
    if (present == m_cameras)
        return;
    removeMissing(present);
    insertNew(present);
    emit countChanged();
}

void CameraModel::removeMissing(const QList<QCameraInfo> &present)
{
    for (int row = m_cameras.size() - 1; row >= 0; --row) {
        if (present.contains(m_cameras.at(row)))
            continue;
        beginRemoveRows(QModelIndex(), row, row);
        const QCameraInfo camera = m_cameras.takeAt(row);
        endRemoveRows();
        emit unplugged(camera.deviceName(), camera.description());
    }
}

void CameraModel::insertNew(const QList<QCameraInfo> &present)
{
    for (const QCameraInfo &camera : present) {
        if (m_cameras.contains(camera))
            continue;
        beginInsertRows(QModelIndex(), m_cameras.size(), m_cameras.size());
        m_cameras.append(camera);
        endInsertRows();
        emit plugged(camera.deviceName());
    }
}

} // namespace Viewer
