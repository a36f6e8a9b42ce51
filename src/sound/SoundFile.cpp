#include "sound/SoundFile.h"

#include "sound/SoundFileIO.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto formats = "mp3,aac,mov,caf,wav,w64,aiff,flac,ogg";
constexpr auto codecs = "mp3float,mp3,mp2float,mp2,aac,aac_fixed,libfdk_aac,alac,adpcm_ima_wav,adpcm_ima_qt,"
                        "flac,vorbis,libvorbis,opus,libopus,"
                        "pcm_s8,pcm_u8,pcm_s16le,pcm_s16be,pcm_s24le,pcm_s24be,pcm_s32le,pcm_s32be,"
                        "pcm_f32le,pcm_f32be,pcm_f64le,pcm_f64be,pcm_alaw,pcm_mulaw";

// How much may be read, and how much processor time spent, on opening a file and on decoding each chunk.
constexpr auto timeToOpen = 250ms;
constexpr qint64 bytesToOpen = 64 << 20;
constexpr auto timeToDecode = 500ms;
constexpr qint64 bytesToDecode = 32 << 20;
// A scratch damages a few packets; after more in a row the rest of the file is taken for damaged.
constexpr int maxConsecutiveDecodeErrors = 25;
// A file may claim anything in its tables. These suffice for four hours of MPEG-4.
constexpr size_t maxAllocation = 16 << 20;
constexpr int maxStreams = 8;

int isBudgetExhausted(void *io)
{
    return static_cast<SoundFileIO *>(io)->isBudgetExhausted();
}

// Errors in reading the file, if any, are the cause of `fallback`.
QString openError(const SoundFileIO &io, const QString &fallback)
{
    if (io.hasFailed())
        return u"The file cannot be read"_s;
    if (io.hasTooManyComments())
        return u"Too many comments"_s;
    return io.isBudgetExhausted() ? u"Timed out opening the file"_s : fallback;
}

} // namespace

void SoundFile::Free::operator()(AVFormatContext *context) const
{
    avformat_close_input(&context);
}

void SoundFile::Free::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void SoundFile::Free::operator()(AVFrame *audioFrame) const
{
    av_frame_free(&audioFrame);
}

void SoundFile::Free::operator()(AVPacket *audioPacket) const
{
    av_packet_free(&audioPacket);
}

std::unique_ptr<SoundFile> SoundFile::open(const QString &path, QString &error)
{
    auto io = SoundFileIO::open(path, error);
    if (!io)
        return nullptr;
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(maxAllocation);
    std::unique_ptr<SoundFile> file(new SoundFile(std::move(io)));
    file->io->setBudget(bytesToOpen, timeToOpen);
    error = file->openFormat(path);
    if (error.isEmpty())
        error = file->openCodec();
    if (error.isEmpty())
        error = file->decodeBeginning();
    return error.isEmpty() ? std::move(file) : nullptr;
}

SoundFile::SoundFile(std::unique_ptr<SoundFileIO> io)
    : io(std::move(io))
    , frame(av_frame_alloc())
    , packet(av_packet_alloc())
{
    Q_CHECK_PTR(frame);
    Q_CHECK_PTR(packet);
}

SoundFile::~SoundFile() = default;

double SoundFile::duration() const
{
    if (length)
        return *length;
    double reported = 0;
    if (stream->duration > 0)
        reported = double(stream->duration) * av_q2d(stream->time_base);
    else if (format->duration > 0)
        reported = double(format->duration) / AV_TIME_BASE;
    return std::max(reported, furthestPosition);
}

SoundFile::Status SoundFile::read(std::vector<SoundFrame> &out, int count)
{
    io->setBudget(bytesToDecode, timeToDecode);
    const double target = position + double(count) / sampleRate;
    while (position < target) {
        // Any amount of data may follow after the end of the audio.
        const Status status = position < endPosition() ? decodeFrame() : Status::Ended;
        if (status == Status::Ended && !length)
            length = furthestPosition;
        if (status != Status::More)
            return status;
        if (!convertFrame(out))
            return Status::Damaged;
    }
    return Status::More;
}

bool SoundFile::rewind()
{
    io->setBudget(bytesToDecode, timeToDecode);
    position = 0;
    seekTarget = 0;
    avcodec_flush_buffers(codec.get());
    return av_seek_frame(format.get(), stream->index, firstPacket, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool SoundFile::seek(double seconds)
{
    std::vector<SoundFrame> discarded;
    converter.flush(discarded);
    const bool done = rewind();
    seekTarget = seconds;
    return done;
}

QString SoundFile::openFormat(const QString &path)
{
    AVFormatContext *context = avformat_alloc_context();
    Q_CHECK_PTR(context);
    context->pb = io->context();
    context->format_whitelist = av_strdup(formats);
    context->codec_whitelist = av_strdup(codecs);
    context->interrupt_callback = {&isBudgetExhausted, io.get()};
    context->max_streams = maxStreams;
    if (avformat_open_input(&context, path.toUtf8().constData(), nullptr, nullptr) < 0)
        return openError(*io, u"Unknown format"_s);
    format.reset(context);
    // It fails when one of the streams is damaged, which need not be the one that is played. Any fault of
    // that one shows when its beginning is decoded.
    avformat_find_stream_info(context, nullptr);
    const int index = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0)
        return openError(*io, u"No audio stream"_s);
    for (unsigned i = 0; i < context->nb_streams; ++i)
        context->streams[i]->discard = int(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    stream = context->streams[index];
    return {};
}

QString SoundFile::openCodec()
{
    const AVCodec *decoder = avcodec_find_decoder(stream->codecpar->codec_id);
    codec.reset(avcodec_alloc_context3(decoder));
    Q_CHECK_PTR(codec);
    codec->codec_whitelist = av_strdup(codecs);
    codec->thread_count = 1;
    codec->pkt_timebase = stream->time_base;
    if (!decoder || avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0 ||
        avcodec_open2(codec.get(), decoder, nullptr) < 0)
        return u"Unsupported codec"_s;
    return {};
}

QString SoundFile::decodeBeginning()
{
    firstPacket = AV_NOPTS_VALUE;
    const Status status = decodeFrame();
    firstPacket = firstPacket == AV_NOPTS_VALUE ? 0 : firstPacket;
    std::vector<SoundFrame> discarded;
    if (status == Status::More && !convertFrame(discarded))
        return u"Unsupported sample rate or number of channels"_s;
    if (status != Status::More || !seek(0))
        return openError(*io, u"The sound is damaged"_s);
    return {};
}

// Feeds the decoder with packets until it returns a frame. Packets that cannot be decoded are skipped.
SoundFile::Status SoundFile::decodeFrame()
{
    int errors = 0;
    while (errors < maxConsecutiveDecodeErrors && !io->isBudgetExhausted()) {
        const int received = avcodec_receive_frame(codec.get(), frame.get());
        if (received == 0)
            return Status::More;
        if (received == AVERROR_EOF)
            return Status::Ended;
        const int got = av_read_frame(format.get(), packet.get());
        const bool isEnd = got == AVERROR_EOF;
        if (got < 0 && !isEnd && got != AVERROR(EAGAIN))
            return Status::Damaged;
        const bool needsPacket = received == AVERROR(EAGAIN);
        const bool wasSent =
            isEnd ? avcodec_send_packet(codec.get(), nullptr) >= 0 : got >= 0 && sendPacket();
        errors += needsPacket && wasSent ? 0 : 1;
    }
    return Status::Damaged;
}

bool SoundFile::sendPacket()
{
    bool sent = true;
    if (packet->stream_index == stream->index) {
        if (firstPacket == AV_NOPTS_VALUE)
            firstPacket = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
        sent = avcodec_send_packet(codec.get(), packet.get()) >= 0;
    }
    av_packet_unref(packet.get());
    return sent;
}

bool SoundFile::convertFrame(std::vector<SoundFrame> &out)
{
    const int rate = frame->sample_rate;
    if (rate <= 0)
        return false;
    const auto samplesTo = [&](double moment) {
        return int(std::clamp(std::round((moment - position) * rate), 0.0, double(frame->nb_samples)));
    };
    const int first = samplesTo(seekTarget);
    const int last = samplesTo(endPosition());
    const bool converted = last <= first || converter.convert(*frame, first, last - first, out);
    position += double(last) / rate;
    furthestPosition = std::max(furthestPosition, position);
    return converted;
}

double SoundFile::endPosition() const
{
    // Only MPEG-4 says exactly where in its last packet the sound ends.
    const bool isExact = std::strncmp(format->iformat->name, "mov", 3) == 0 && stream->duration > 0;
    return isExact ? double(stream->duration) * av_q2d(stream->time_base) : HUGE_VAL;
}
