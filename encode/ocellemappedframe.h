// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QVideoFrame>

/*!
 * Holds a picture mapped for reading for as long as it lives.
 *
 * Threads: built on the worker thread, destroyed on any.
 * Units:   bytes.
 * Errors:  none here; a picture that does not map has null planes, as one in three planes of less
 *          than two lines has. One whose owner has it mapped for writing cannot be mapped again and
 *          shows its owner's planes.
 */
class OcelleMappedFrame
{
public:
    explicit OcelleMappedFrame(const QVideoFrame &frame);
    ~OcelleMappedFrame();

    const QVideoFrame &frame() const { return m_frame; }

    /*!
     * Whether all planes share the memory that was mapped, the second one right behind the first.
     * Else each but the first has memory of its own, of unknown size.
     */
    bool isOnePiece() const;
    /*! Whether so many lines from \a plane on lie in the mapped memory. */
    bool covers(const uchar *plane, int lines, int stride, int lineBytes) const;
    /*! Warns that there is less memory than the picture would have to have. */
    void warnOfMissingMemory() const;

private:
    Q_DISABLE_COPY(OcelleMappedFrame)

    QVideoFrame m_frame;
    const bool m_isMapped; // by us
};
