// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avpointers.h"
#include "fileend.h"
#include "storedturn.h"
#include "videocodec.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <memory>
#include <optional>

namespace Tool {

/*! One compressed picture, as a decoder takes it: H.264 and H.265 with start codes. */
struct StreamUnit
{
    QByteArray data;
    qint64 time = 0; // of its picture: microseconds since the first unit's, no two the same
    qint64 due = 0;  // when to decode it: microseconds since the first unit
    bool isKey = false;
    int fields =
            2; // that it shows: 2 for a picture, 1 for half of one, 0 where it only helps others
};

/*!
 * The compressed pictures of a video file or a bare stream, once, in the order of decoding.
 *
 * Threads: one at a time.
 * Errors:  an empty pointer or Result::Failed, with a text that names the file.
 */
class StreamReader
{
public:
    struct Properties
    {
        VideoCodec codec = VideoCodec::H264;
        QSize size;              // what is to be seen
        double rate = 0;         // pictures per second
        int timeScale = 1000000; // ticks per second of the file's own time
        qint64 duration = 0;     // microseconds; 0 where the file does not say
        StoredTurn turn;         // that the decoder does not make
    };
    enum class Result { Unit, End, Failed };

    /*! \a codec is needed for bare streams that are not recognised; any other one has to match. */
    static std::unique_ptr<StreamReader> open(const QString &path, std::optional<VideoCodec> codec,
                                              QString *error);
    ~StreamReader();

    const Properties &properties() const { return m_properties; }
    /*! Whether the file tells its pictures' times; else they are made up, in decoding order. */
    bool hasTimes() const { return m_hasTimes; }
    Result read(StreamUnit *unit, QString *error);
    /*! After the end: why that came too early; empty where it did not. */
    QString missingEnd() const { return m_end.missing(m_path); }

private:
    StreamReader() = default;

    bool openFile(std::optional<VideoCodec> codec, QString *error);
    bool openInput(const char *demuxer, QString *error);
    bool findStream(QString *error);
    bool openTools(QString *error);
    void readProperties();
    int readPacket();
    int feedFilter();
    void describe(StreamUnit *unit);
    int fieldsOf(const AVPacket &packet);
    qint64 microseconds(std::int64_t stamp) const;

    QString m_path;
    AVFormatContext *m_container = nullptr; // owned
    AvPointer<AVBSFContext> m_filter;       // to start codes; null where they are there
    AvPointer<AVCodecParserContext> m_parser;
    AvPointer<AVCodecContext> m_parserContext; // never opened
    AvPointer<AVPacket> m_packet;
    int m_stream = -1;
    Properties m_properties;
    bool m_hasTimes = false;
    bool m_isFiltering = false; // the filter was told of the end
    qint64 m_units = 0;
    std::int64_t m_firstStamp = 0;
    std::int64_t m_firstDue = 0;
    FileEnd m_end;
};

} // namespace Tool
