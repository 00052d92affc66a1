// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractListModel>
#include <QCameraInfo>
#include <QTimer>

namespace Viewer {

/*!
 * The cameras there are, as they come and go.
 *
 * Qt has no signal for that, so it looks several times a second, which takes some microseconds.
 *
 * Threads: the application thread.
 */
class CameraModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)
public:
    enum Role { IdRole = Qt::UserRole + 1, NameRole };

    explicit CameraModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return m_cameras.size(); }
    Q_INVOKABLE QString idAt(int row) const; // empty where there is none
    Q_INVOKABLE QString nameOf(const QString &id) const;
    Q_INVOKABLE int indexOf(const QString &id) const; // -1 where there is none
    /*! The system's default camera, else the first one; empty where there is none. */
    Q_INVOKABLE QString preferred() const;
    /*! The id of the camera that \a text means; empty, and problem() says why, where none does. */
    Q_INVOKABLE QString find(const QString &text) const;
    Q_INVOKABLE QString problem(const QString &text) const;
    /*! Why there are no cameras and will be none; empty where some may come. */
    Q_INVOKABLE QString trouble() const;

public slots:
    void look();

signals:
    void countChanged();
    void plugged(const QString &id);
    void unplugged(const QString &id, const QString &name);

private:
    void removeMissing(const QList<QCameraInfo> &present);
    void insertNew(const QList<QCameraInfo> &present);

    QList<QCameraInfo> m_cameras;
    QTimer m_timer;
};

} // namespace Viewer
