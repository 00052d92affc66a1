// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "unitsink.h"

#include <QObject>
#include <QSize>
#include <QStringList>
#include <QVector>
#include <QVideoEncoderSettings>
#include <QVideoFrame>

#include <palaver/qpvencodecontrol.h>

class QMediaService;
class QMediaServiceProviderPlugin;
class QPVEncodedVideoSourceControl;
class QVideoEncoderSettingsControl;

/*!
 * An application that encodes: the back end's encoder service, all of its controls, and a sink.
 *
 * Threads: one.
 * Errors:  operations that wait return false after half a minute.
 */
class EncodingClient : public QObject
{
    Q_OBJECT
public:
    /*! The back end's plugin, from the file OCELLE_BACKEND; null where it does not load. */
    static QMediaServiceProviderPlugin *backend();

    EncodingClient();
    ~EncodingClient() override; // with the service in whatever state it is

    bool isValid() const { return control && settings && source; }

    /*! Settings for a codec (MIME type) in constant mode. */
    static QVideoEncoderSettings encoderSettings(const QString &codec, int bitRate);
    /*! Sets them, starts and waits until pictures are welcome. */
    bool start(const QVideoEncoderSettings &wanted, QSize size, double rate = 30);
    /*! Waits for room. */
    bool encode(const QVideoFrame &frame);
    /*! Waits until all that was taken has come out. */
    bool waitForUnits();
    bool stop(); // waits, too, also for the sink to be told

    int accepted() const { return m_accepted; } // pictures

    QMediaService *service = nullptr;
    QPVEncodeControl *control = nullptr;
    QVideoEncoderSettingsControl *settings = nullptr;
    QPVEncodedVideoSourceControl *source = nullptr;
    UnitSink sink;
    QVector<QPVEncoder::Status> statuses;
    QStringList errors;

private:
    int m_accepted = 0;
};
