// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMetaType>
#include <QObject>

#include <palaver/qpvglobal.h>

/*! Names the states and errors of a video encoder. */
class PALAVER_EXPORT QPVEncoder : public QObject
{
    Q_OBJECT
public:
    enum Status : int {
        UnknownStatus0 = 0,
        UnloadedStatus = 1, // no encoder held
        UnknownStatus2 = 2,
        LoadedStatus = 3,   // held, not started
        StoppingStatus = 4, // being flushed or drained
        StartingStatus = 5, // waiting for the first frame, which configures it
        ActiveStatus = 6,   // configured and encoding
    };
    Q_ENUM(Status)

    enum Error : int {
        NoError = 0,
        ResourceError = 1, // no encoder to be had
        FormatError = 2,   // the sink does not take the settings
        SinkError = 3,     // the sink does not start
        EncoderError = 4,
    };
    Q_ENUM(Error)

    explicit QPVEncoder(QObject *parent = nullptr);
    ~QPVEncoder();
};

Q_DECLARE_METATYPE(QPVEncoder::Status)
Q_DECLARE_METATYPE(QPVEncoder::Error)
