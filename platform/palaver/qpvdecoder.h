// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMetaType>
#include <QObject>

#include <palaver/qpvglobal.h>

/*! Names the states and errors of a video decoder. */
class PALAVER_EXPORT QPVDecoder : public QObject
{
    Q_OBJECT
public:
    enum Status : int {
        UnknownStatus0 = 0,
        UnloadedStatus = 1, // no decoder held
        UnknownStatus2 = 2,
        UnknownStatus3 = 3,
        LoadedStatus = 4,   // held, not started
        StandbyStatus = 5,  // never set; as good as unloaded
        StoppingStatus = 6, // being flushed or drained
        StartingStatus = 7, // configured, no frame passed yet
        ActiveStatus = 8,   // at least one frame passed
    };
    Q_ENUM(Status)

    enum Error : int {
        NoError = 0,
        ResourceError = 1, // no decoder to be had
        UnknownError2 = 2,
        DecodeError = 3,
    };
    Q_ENUM(Error)

    explicit QPVDecoder(QObject *parent = nullptr);
    ~QPVDecoder();
};

Q_DECLARE_METATYPE(QPVDecoder::Status)
Q_DECLARE_METATYPE(QPVDecoder::Error)
