// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QSize>
#include <QtEndian>

/*! IVF, the plain file format of VP8 and VP9: a header, then units, each with its size and time. */
namespace Ivf {

struct Header
{
    QByteArray codec; // "VP80" or "VP90"
    QSize size;       // pixels
};

struct Unit
{
    QByteArray data;  // empty: there is no other
    quint64 time = 0; // microseconds
};

template <typename T>
void put(QByteArray *bytes, int at, T value)
{
    qToLittleEndian<T>(value, bytes->data() + at);
}

inline bool write(QIODevice *file, const Header &header)
{
    QByteArray bytes(32, '\0');
    bytes.replace(0, 4, "DKIF");
    put<quint16>(&bytes, 6, 32); // bytes of this header
    bytes.replace(8, 4, header.codec);
    put<quint16>(&bytes, 12, quint16(header.size.width()));
    put<quint16>(&bytes, 14, quint16(header.size.height()));
    put<quint32>(&bytes, 16, 1000000); // ticks of time per second
    put<quint32>(&bytes, 20, 1);
    return file->write(bytes) == bytes.size();
}

inline bool write(QIODevice *file, const Unit &unit)
{
    QByteArray bytes(12, '\0');
    put<quint32>(&bytes, 0, quint32(unit.data.size()));
    put<quint64>(&bytes, 4, unit.time);
    bytes += unit.data;
    return file->write(bytes) == bytes.size();
}

/*! False where that is no such file. */
inline bool read(QIODevice *file, Header *header)
{
    const QByteArray bytes = file->read(32);
    if (bytes.size() < 32 || !bytes.startsWith("DKIF"))
        return false;
    header->codec = bytes.mid(8, 4);
    header->size = QSize(qFromLittleEndian<quint16>(bytes.constData() + 12),
                         qFromLittleEndian<quint16>(bytes.constData() + 14));
    return true;
}

/*! False where the file is cut off. */
inline bool read(QIODevice *file, Unit *unit)
{
    *unit = Unit();
    const QByteArray bytes = file->read(12);
    if (bytes.isEmpty())
        return true;
    if (bytes.size() < 12)
        return false;
    const auto size = qFromLittleEndian<quint32>(bytes.constData());
    unit->time = qFromLittleEndian<quint64>(bytes.constData() + 4);
    unit->data = file->read(size);
    return size > 0 && unit->data.size() == int(size);
}

} // namespace Ivf
