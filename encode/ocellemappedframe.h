#pragma once

#include <QVideoFrame>

/*!
 * Holds a picture mapped for reading for as long as it lives.
 *
 * Threads: built on the worker thread, destroyed on any.
 * Units:   bytes.
 * Errors:  none here; a picture that does not map has null planes. One whose owner has it mapped
 *          for writing cannot be mapped again and shows its owner's planes.
 */
class OcelleMappedFrame
{
public:
    explicit OcelleMappedFrame(const QVideoFrame &frame);
    ~OcelleMappedFrame();

    const QVideoFrame &frame() const { return m_frame; }

    /*!
     * Whether a plane of so many lines lies in mapped memory, as far as can be told: one that
     * begins outside the first plane's piece of memory has a piece of its own, of unknown size.
     */
    bool covers(const uchar *plane, int lines, int stride, int lineBytes) const;
    /*! Warns that there is less memory than the picture would have to have. */
    void warnOfMissingMemory() const;

private:
    Q_DISABLE_COPY(OcelleMappedFrame)

    QVideoFrame m_frame;
    const bool m_isMapped; // by us
};
