// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "gate.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QVector>

#include <memory>
#include <mutex>
#include <vector>

class QAbstractVideoSurface;

/*!
 * What became of one video output of the platform; it outlives the output. Outputs are numbered
 * from 1 in the order they are made and called "output N" in the log.
 *
 * Threads: any thread.
 */
class FakeVideoOutput
{
public:
    /*! The output made \a number-th since the platform was built, or null. */
    static std::shared_ptr<FakeVideoOutput> at(int number);
    static int count();
    /*! How many outputs have not been destroyed yet. */
    static int alive();
    static void forgetAll();

    bool isAlive() const;
    bool hadParent() const; // when it was made
    QAbstractVideoSurface *surface() const;
    bool isMirrored() const;
    QRect viewport() const;
    /*! Numbers of the buffers delivered, oldest first. */
    QVector<int> buffers() const;
    /*! How many owners each delivered buffer had during the call. */
    QVector<long> bufferOwners() const;

    Gate bufferGate; // holds onGraphicBuffer() up
    Gate stopGate;   // holds stop() up

private:
    friend class FakeVideoOutputAccess;

    mutable std::mutex m_mutex; // guards the members below
    int m_number = 0;
    bool m_alive = true;
    bool m_hadParent = false;
    QAbstractVideoSurface *m_surface = nullptr;
    bool m_mirrored = false;
    QRect m_viewport;
    QVector<int> m_buffers;
    QVector<long> m_owners;
};
