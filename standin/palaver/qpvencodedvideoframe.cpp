// SPDX-License-Identifier: BSD-3-Clause
#include <QSharedData>

#include <palaver/qpvencodedvideoframe.h>

#include <limits>

namespace {

/*! The one copy of the bytes; none where there are none, or more than a byte array can hold. */
QByteArray copyOf(const char *data, unsigned long size)
{
    if (!data || size == 0)
        return {};
    if (size > static_cast<unsigned long>(std::numeric_limits<int>::max() - 64)) {
        qWarning("QPVEncodedVideoFrame: %lu bytes are more than a frame can hold", size);
        return {};
    }
    return QByteArray(data, static_cast<int>(size));
}

} // namespace

class QPVEncodedVideoFramePrivate : public QSharedData
{
public:
    QPVEncodedVideoFramePrivate(QByteArray payload, QPVEncodedVideoFrame::MetaData metaData)
        : data(std::move(payload))
        , meta(metaData)
    {
    }

    const QByteArray data;
    const QPVEncodedVideoFrame::MetaData meta;
};

// An empty frame holds nothing, not even a private part.
QPVEncodedVideoFrame::QPVEncodedVideoFrame() = default;

QPVEncodedVideoFrame::QPVEncodedVideoFrame(const char *data, unsigned long size,
                                           const MetaData &meta)
    : m_d(new QPVEncodedVideoFramePrivate(copyOf(data, size), meta))
{
}

QPVEncodedVideoFrame::QPVEncodedVideoFrame(const QPVEncodedVideoFrame &other) = default;

QPVEncodedVideoFrame &QPVEncodedVideoFrame::operator=(const QPVEncodedVideoFrame &other) = default;

QPVEncodedVideoFrame::~QPVEncodedVideoFrame() = default;

QByteArray QPVEncodedVideoFrame::data() const
{
    return m_d ? m_d->data : QByteArray();
}

QPVEncodedVideoFrame::MetaData QPVEncodedVideoFrame::meta() const
{
    return m_d ? m_d->meta : MetaData { UnknownFrameType0, 0 };
}

bool QPVEncodedVideoFrame::isValid() const
{
    return m_d && !m_d->data.isEmpty();
}

QDebug operator<<(QDebug debug, const QPVEncodedVideoFrame &frame)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "QPVEncodedVideoFrame(";
    if (frame.isValid()) {
        const QPVEncodedVideoFrame::MetaData meta = frame.meta();
        debug << frame.data().size() << " bytes, type " << static_cast<int>(meta.frameType)
              << ", timestamp " << meta.timestamp;
    }
    return debug << ')';
}
