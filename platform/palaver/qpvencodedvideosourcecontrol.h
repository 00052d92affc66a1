// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaControl>

#include <palaver/qpvglobal.h>
#include <palaver/qpvsource.h>

/*! Offers a service's compressed video to a sink. */
class PALAVER_EXPORT QPVEncodedVideoSourceControl : public QMediaControl, public QPVSource
{
    Q_OBJECT
public:
    ~QPVEncodedVideoSourceControl();

protected:
    explicit QPVEncodedVideoSourceControl(QObject *parent = nullptr);
};

#define QPVEncodedVideoSourceControl_iid "veltra.palaver.encodedvideosourcecontrol/1.0"
Q_MEDIA_DECLARE_CONTROL(QPVEncodedVideoSourceControl, QPVEncodedVideoSourceControl_iid)
