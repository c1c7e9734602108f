#include "Media/FrameSource.h"

#include "Media/MediaError.h"
#include "Media/PacketTable.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace stillwick {

namespace {

using Category = MediaError::Category;

/// Thrown inside this unit where a frame in mid-film has no time.
struct TimesMissing {};

// A damaged stretch looks alike from every key packet: after this many the best is taken.
constexpr int maximumDoubts = 3;
// A film none of whose first pictures has a time has none at all.
constexpr int maximumTimelessPictures = 300;
// Beginning again costs the decoder's delay: a key packet nearer than this is decoded through.
constexpr std::size_t worthJumping = 12;

/// Decoders for which leaving out unreferenced pictures changes nothing in the others.
bool mayLeaveOutPictures(const AVCodecParameters& parameters) {
    const bool isKnown =
        parameters.codec_id == AV_CODEC_ID_H264 || parameters.codec_id == AV_CODEC_ID_HEVC;
    const bool isProgressive = parameters.field_order == AV_FIELD_PROGRESSIVE ||
                               parameters.field_order == AV_FIELD_UNKNOWN;
    return isKnown && isProgressive;
}

/// H.264 4:4:4 streams of one widespread encoder say in their first packet alone how they were
/// made.
bool needsFirstPacket(const AVCodecParameters& parameters) {
    return parameters.codec_id == AV_CODEC_ID_H264 &&
           (parameters.profile == FF_PROFILE_H264_HIGH_444_PREDICTIVE ||
            parameters.profile == FF_PROFILE_H264_CAVLC_444);
}

} // namespace

FrameSource::FrameSource(const QString& path, const std::stop_token& stop)
    : m_reader(path, stop), m_queue(m_reader), m_decoder(m_reader.stream()),
      m_mayLeaveOut(mayLeaveOutPictures(*m_reader.stream().codecpar)) {
    try {
        if (PacketTable::isNeededFor(m_reader))
            adoptTable();
        else if (!m_reader.hasOwnTimeline() || needsFirstPacket(*m_reader.stream().codecpar))
            findFirstPicture();
    } catch (const TimesMissing&) {
        adoptTable();
    }
}

void FrameSource::adoptTable() {
    m_run = {};
    m_reader.setTable(PacketTable::make(m_reader.path(), m_reader.stopToken()));
    findFirstPicture();
}

void FrameSource::findFirstPicture() {
    begin(m_queue.beginAtStart());
    m_run.next = decodeNext(std::numeric_limits<std::int64_t>::min());
    if (!m_run.next)
        throw MediaError::make(Category::NoPicture);
    if (!m_reader.hasOwnTimeline())
        m_zero = m_run.next->presentationTime();
}

std::int64_t FrameSource::toTick(const CMTime& time, AVRounding rounding) const {
    const AVRational timeBase = m_reader.stream().time_base;
    return av_rescale_q_rnd(time.value, {1, time.timescale}, timeBase, rounding);
}

FrameSource::Target FrameSource::targetFor(const CMTime& time, const Tolerance& tolerance) const {
    if (!time.isNumeric() || time.timescale <= 0 || time.value < 0)
        throw MediaError::make(Category::TimeOutOfRange);
    constexpr std::int64_t farthest = std::numeric_limits<std::int64_t>::max() / 4;
    Target target;
    target.tick = toTick(time, AV_ROUND_DOWN);
    target.endTick = toTick(time, AV_ROUND_UP);
    if (target.tick < 0 || target.tick > farthest || target.endTick < 0)
        throw MediaError::make(Category::TimeOutOfRange);
    target.tick += m_zero;
    target.endTick += m_zero;
    target.soonEnough = target.tick + 1;
    if (tolerance.before == CMTime::positiveInfinity())
        target.soonEnough = std::numeric_limits<std::int64_t>::min();
    else if (tolerance.before > CMTime::zero() && tolerance.before.timescale > 0)
        target.soonEnough = target.endTick - toTick(tolerance.before, AV_ROUND_DOWN);
    target.lateEnough = target.tick;
    if (tolerance.after.isNumeric() && tolerance.after.timescale > 0)
        target.lateEnough += toTick(tolerance.after, AV_ROUND_DOWN);
    return target;
}

CMTime FrameSource::filmTime(const VideoFrame& frame) const {
    const AVRational timeBase = m_reader.stream().time_base;
    return CMTime::make((frame.presentationTime() - m_zero) * timeBase.num, timeBase.den);
}

SharedFrame FrameSource::frameAt(const CMTime& time, const Tolerance& tolerance,
                                 const std::stop_token& stop) {
    m_reader.setStopToken(stop);
    m_reader.throwIfStopped();
    try {
        return locate(targetFor(time, tolerance));
    } catch (const TimesMissing&) {
        adoptTable();
        return locate(targetFor(time, tolerance));
    } catch (...) {
        m_run.isUsable = false;
        throw;
    }
}

bool FrameSource::isNearEnough(const Target& target) const {
    if (!m_run.isUsable || m_run.isDoubtful || !m_run.shown)
        return false;
    const std::int64_t time = m_run.shown->presentationTime();
    return time > target.tick && time <= target.lateEnough;
}

SharedFrame FrameSource::locate(const Target& target) {
    if (isNearEnough(target))
        return m_run.shown;
    if (prepareToContinue(target) && advanceTo(target) == Outcome::Found && !m_run.isDoubtful) {
        throwIfPastEnd(target);
        return m_run.shown;
    }
    return locateFromKey(target);
}

SharedFrame FrameSource::locateFromKey(const Target& target) {
    begin(m_queue.beginBefore(target.tick));
    for (int attempt = 1;; ++attempt) {
        const Outcome outcome = advanceTo(target);
        const bool isFromStart = m_run.entry.isStart;
        // From the start too a second try may do better: some decoders learn only while they decode
        // how far a stream reorders its pictures.
        const bool isLastWord = attempt >= maximumDoubts || (isFromStart && attempt > 1);
        if (outcome == Outcome::Found && (!m_run.isDoubtful || isLastWord)) {
            throwIfPastEnd(target);
            return m_run.shown;
        }
        if (isFromStart && attempt > 1)
            throw MediaError::make(Category::NoPicture);
        begin(isFromStart ? m_queue.beginAtStart()
                          : m_queue.beginBefore(target.tick, m_run.entry.keyDecodeTime));
    }
}

void FrameSource::begin(const PacketQueue::Entry& entry) {
    m_decoder.flush();
    m_run = {};
    m_run.entry = entry;
    m_run.isUsable = true;
}

bool FrameSource::prepareToContinue(const Target& target) {
    if (!m_run.isUsable || m_run.isDoubtful)
        return false;
    const bool isBehind =
        m_run.shown ? target.tick < m_run.shown->presentationTime() : !m_run.entry.isStart;
    if (isBehind || !m_queue.isNear(target.tick))
        return false;
    const bool isDecoded = m_run.next && m_run.next->presentationTime() > target.tick;
    if (isDecoded || m_run.hasSentEnd)
        return true;
    m_queue.readAheadTo(target.tick);
    const auto key = m_queue.lastKeyBefore(target.tick);
    if (key && (*key > worthJumping || m_queue.isSeam(*key)))
        begin(m_queue.beginAt(*key));
    return true;
}

FrameSource::Outcome FrameSource::advanceTo(const Target& target) {
    m_queue.readAheadTo(target.tick);
    for (;;) {
        if (m_run.next) {
            if (m_run.next->presentationTime() > target.tick)
                break;
            if (m_run.shown)
                m_run.spacing = m_run.next->presentationTime() - m_run.shown->presentationTime();
            m_run.shown = std::exchange(m_run.next, nullptr);
            m_queue.forgetBefore(m_run.shown->presentationTime());
        }
        if (m_run.shown && isSettled(target))
            return Outcome::Found;
        m_run.next = decodeNext(target.tick);
        if (!m_run.next)
            break;
    }
    if (!m_run.shown) {
        // Before the first picture, that picture is shown.
        if (!m_run.entry.isStart || !m_run.next)
            return Outcome::MustBeginEarlier;
        m_run.shown = m_run.next;
    }
    const auto expected = m_queue.frameTimeBefore(target.tick);
    if (expected && *expected > m_run.shown->presentationTime())
        m_run.isDoubtful = true;
    return Outcome::Found;
}

bool FrameSource::isSettled(const Target& target) const {
    const std::int64_t time = m_run.shown->presentationTime();
    return time >= target.soonEnough || m_queue.frameTimeBefore(target.tick) == time;
}

SharedFrame FrameSource::decodeNext(std::int64_t tick) {
    for (int timeless = 0;;) {
        m_reader.throwIfStopped();
        SharedFrame frame = m_decoder.receive();
        if (!frame) {
            m_run.isDrained = m_run.hasSentEnd;
            if (m_run.isDrained && timeless > 0 && !m_hasTimes)
                throw TimesMissing{};
            if (m_run.isDrained)
                return nullptr;
            sendNext(tick);
        } else if (frame->presentationTime() == AV_NOPTS_VALUE) {
            // Pictures before the first that has a time are not on the timeline.
            const bool hasNone = !m_hasTimes && ++timeless > maximumTimelessPictures;
            if (!m_reader.table() && (m_run.hasTimes || hasNone))
                throw TimesMissing{};
        } else {
            m_hasTimes = true;
            m_run.hasTimes = true;
            if (isAcceptable(*frame))
                return frame;
        }
    }
}

bool FrameSource::isAcceptable(const VideoFrame& frame) {
    const std::int64_t time = frame.presentationTime();
    // Pictures shown before the key packet that they follow may lean on what came before it.
    if (!m_run.entry.isStart && time < m_run.entry.keyTime)
        return false;
    const SharedFrame& last = m_run.next ? m_run.next : m_run.shown;
    if (last && time < last->presentationTime())
        return false;
    const bool isKey = time == m_run.entry.keyTime;
    const AVPictureType type = frame.avFrame().pict_type;
    if (!frame.isIntact() || (isKey && (type == AV_PICTURE_TYPE_P || type == AV_PICTURE_TYPE_B)))
        m_run.isDoubtful = true;
    return true;
}

void FrameSource::sendNext(std::int64_t tick) {
    const libav::Packet packet = m_queue.pop();
    m_run.hasSentEnd = !packet;
    m_packetsDecoded += packet ? 1 : 0;
    // The frames next to the one wanted are decoded in any case: field pairs count as two here.
    constexpr int alwaysDecoded = 4;
    const auto threshold =
        m_mayLeaveOut ? m_queue.frameTimeBefore(tick, alwaysDecoded) : std::nullopt;
    const bool isOnTheWay =
        packet && packet->pts != AV_NOPTS_VALUE && threshold && packet->pts < *threshold;
    m_decoder.send(packet.get(), isOnTheWay ? VideoDecoder::Effort::ReferencesOnly
                                            : VideoDecoder::Effort::EveryPicture);
}

void FrameSource::throwIfPastEnd(const Target& target) const {
    const bool isLast =
        (m_run.isDrained && !m_run.next) || m_queue.isLastFrame(m_run.shown->presentationTime());
    if (isLast && target.endTick > endOfLastFrame())
        throw MediaError::make(Category::TimeOutOfRange);
}

std::int64_t FrameSource::endOfLastFrame() const {
    const AVStream& stream = m_reader.stream();
    const AVRational rate = stream.avg_frame_rate;
    const std::int64_t average =
        rate.num > 0 && rate.den > 0 ? av_rescale_q(1, av_inv_q(rate), stream.time_base) : 0;
    std::int64_t duration = m_run.shown->duration();
    // One field of two counts half of the frame's time.
    if (duration <= 0 || (m_run.shown->avFrame().interlaced_frame && m_run.spacing > duration))
        duration = m_run.spacing > 0 ? m_run.spacing : average;
    // Where the container does not tell times, what it calls a duration may be a field's.
    if (m_reader.table() && m_reader.table()->lastDuration() > 0)
        duration = m_reader.table()->lastDuration();
    const std::int64_t end = m_run.shown->presentationTime() + std::max<std::int64_t>(duration, 1);
    if (!m_reader.hasOwnTimeline() || stream.duration <= 0 || stream.start_time == AV_NOPTS_VALUE)
        return end;
    // Where frames are reordered, the track may last longer than its last frame says; a container
    // that claims far more than its frames is not believed.
    const std::int64_t declared = stream.start_time + stream.duration;
    const std::int64_t believable =
        end + std::max(4 * average, av_rescale_q(1, {1, 1}, stream.time_base));
    return declared > end && declared <= believable ? declared : end;
}

} // namespace stillwick
