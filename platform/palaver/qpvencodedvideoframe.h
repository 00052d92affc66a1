// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QByteArray>
#include <QDebug>
#include <QMetaType>
#include <QSharedDataPointer>

#include <palaver/qpvglobal.h>

class QPVEncodedVideoFramePrivate;

/*!
 * One compressed video frame: a copy of its bytes, and what kind and time it is of. Implicitly
 * shared: copies are cheap and may go from thread to thread.
 */
class PALAVER_EXPORT QPVEncodedVideoFrame
{
public:
    enum FrameType : int {
        UnknownFrameType0 = 0,
        KeyFrame = 1,
        DeltaFrame = 2,
    };

    /*! What comes with the bytes. */
    struct MetaData
    {
        FrameType frameType;
        quint64 timestamp; // presentation time, microseconds; all bits set where there is none
    };

    QPVEncodedVideoFrame(); // not valid
    /*! Copies \a size bytes at \a data. */
    QPVEncodedVideoFrame(const char *data, unsigned long size, const MetaData &meta);
    QPVEncodedVideoFrame(const QPVEncodedVideoFrame &other);
    QPVEncodedVideoFrame &operator=(const QPVEncodedVideoFrame &other);
    ~QPVEncodedVideoFrame();

    QByteArray data() const;
    MetaData meta() const;
    bool isValid() const; // holds at least one byte

private:
    QSharedDataPointer<QPVEncodedVideoFramePrivate> m_d;
};

PALAVER_EXPORT QDebug operator<<(QDebug debug, const QPVEncodedVideoFrame &frame);

Q_DECLARE_METATYPE(QPVEncodedVideoFrame)
