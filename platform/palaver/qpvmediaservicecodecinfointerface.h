// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QByteArray>
#include <QString>
#include <QtPlugin>

#include <palaver/qpvglobal.h>

/*!
 * Tells the properties of a service provider's codecs, named by their id.
 *
 * Errors: an unknown id gives a null string, false or 0.
 */
class PALAVER_EXPORT QPVMediaServiceCodecInfoInterface
{
public:
    virtual ~QPVMediaServiceCodecInfoInterface();

    /*! MIME type of \a codec. */
    virtual QString codecType(const QByteArray &codec) const = 0;
    virtual bool codecIsEncoder(const QByteArray &codec) const = 0;
    virtual bool codecIsHardwareAccelerated(const QByteArray &codec) const = 0;

    /*! How many instances of \a codec may run at once. */
    virtual int codecMaxInstances(const QByteArray &codec) const = 0;
};

#define QPVMediaServiceCodecInfoInterface_iid "veltra.palaver.mediaservicecodecinfo/1.0"
Q_DECLARE_INTERFACE(QPVMediaServiceCodecInfoInterface, QPVMediaServiceCodecInfoInterface_iid)
