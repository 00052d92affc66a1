// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMap>
#include <QObject>
#include <QString>
#include <QTimer>

namespace Tool {

/*!
 * Tells of cameras on standard output, one line each: those there are, then those that come and go.
 *
 * Qt has no signal for that and the back end's own is not public, so it looks several times a
 * second, which takes a few microseconds.
 *
 * Threads: the application thread.
 */
class WatchCommand : public QObject
{
    Q_OBJECT
public:
    explicit WatchCommand(bool json, QObject *parent = nullptr);

    /*! Runs until it is interrupted; returns the exit code. */
    int run();

private:
    void look();
    void tell(const QString &event, const QString &id, const QString &name);

    const bool m_json;
    QTimer m_timer;
    QMap<QString, QString> m_cameras; // names by id
    bool m_first = true;
};

} // namespace Tool
