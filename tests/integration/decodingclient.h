// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decodedsurface.h"

#include <QObject>
#include <QSize>
#include <QStringList>
#include <QVector>

#include <palaver/qpvdecodecontrol.h>

class QMediaService;
class QMediaServiceProviderPlugin;
class QVideoRendererControl;

/*!
 * An application that decodes: the back end's decoder service, its controls, and a surface.
 *
 * Threads: one.
 * Errors:  operations that wait return false after half a minute.
 */
class DecodingClient : public QObject
{
    Q_OBJECT
public:
    DecodingClient();
    ~DecodingClient() override; // with the service in whatever state it is

    bool isValid() const { return control && renderer; }

    /*! Starts a stream of a codec (MIME type) and waits until units are welcome. */
    bool start(const QString &codec, QSize size = QSize());
    /*! Waits for room, so that neither the service's queue nor the surface's overflows. */
    bool decode(const QByteArray &unit, qint64 time, bool isKey = false);
    /*! Waits until each unit that was taken has come out as a picture. */
    bool waitForPictures();
    bool drain(); // waits until all has come out and the decoder is gone
    bool stop();  // waits, too

    int accepted() const { return m_accepted; } // units

    DecodedSurface surface; // before the service, which lets go of it
    QMediaService *service = nullptr;
    QPVDecodeControl *control = nullptr;
    QVideoRendererControl *renderer = nullptr;
    QVector<QPVDecoder::Status> statuses;
    QStringList errors;

private:
    int m_accepted = 0;
    int m_forgiven = 0; // units that show nothing, as far as is known
};
