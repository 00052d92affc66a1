// SPDX-License-Identifier: BSD-3-Clause
#include "othercamera.h"

#include <cstdio>

QMediaService *OtherCamera::create(const QString &)
{
    return nullptr;
}

void OtherCamera::release(QMediaService *) {}

QList<QByteArray> OtherCamera::devices(const QByteArray &) const
{
    std::fputs("asked for other cameras\n", stderr); // the test wants to know that it was loaded
    return { QByteArrayLiteral("/dev/other") };
}

QString OtherCamera::deviceDescription(const QByteArray &, const QByteArray &)
{
    return QStringLiteral("Other");
}
