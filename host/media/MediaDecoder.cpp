#include "host/media/MediaDecoder.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <sys/stat.h>
#include <utility>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace {

// Packets read for one request at most: a damaged file whose timestamps
// never reach the wanted time gives up here instead of reading on.
constexpr int packetBudget = 20000;
// A time this little past the frames decoded is reached by decoding on:
// cheaper than going back to a key frame.
constexpr double scrubAhead = 2.0;
// Frame starts remembered for telling which frame a time falls in.
constexpr std::size_t maxSpans = 50000;
constexpr int64_t never = std::numeric_limits<int64_t>::max();
// Timestamps are held within this, so that sums and differences of two of
// them cannot overflow whatever a damaged file says.
constexpr int64_t tsLimit = int64_t(1) << 60;

int64_t clampTs(int64_t ts) { return std::clamp(ts, -tsLimit, tsLimit); }

std::string tooLarge() {
  return "its frames are larger than " + std::to_string(MediaDecoder::maxSide) + " pixels a side";
}

std::string errorText(int err) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(err, text, sizeof text);
  return text;
}

// What the libraries last said of a picture's size on this thread: a
// decoder refuses a picture too large only in its message, leaving the
// stream without a size. Nothing they say is printed: failures come back as
// reasons, and standard error would repeat them for every thumbnail.
thread_local std::string sizeComplaint;

void keepSizeComplaint(void* context, int level, const char* format, va_list args) {
  if (level > AV_LOG_ERROR) return;
  char line[512] = {};
  int printPrefix = 1;
  av_log_format_line2(context, level, format, args, line, sizeof line, &printPrefix);
  if (std::strstr(line, "Picture size ")) sizeComplaint = line;
}

bool refusedForSize() {
  const auto at = sizeComplaint.find("Picture size ");
  unsigned w = 0, h = 0;
  return at != std::string::npos && std::sscanf(sizeComplaint.c_str() + at, "Picture size %ux%u", &w, &h) == 2 &&
         (w > unsigned(MediaDecoder::maxSide) || h > unsigned(MediaDecoder::maxSide));
}

// The kind of media the start of a file looks like, if any.
const AVInputFormat* lookalike(const std::string& path) {
  std::vector<unsigned char> head(std::size_t(1) << 16);
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return nullptr;
  const std::size_t got = std::fread(head.data(), 1, head.size() - AVPROBE_PADDING_SIZE, f);
  std::fclose(f);
  AVProbeData probe{};
  probe.filename = path.c_str();
  probe.buf = head.data();
  probe.buf_size = int(got);
  int score = 0;
  const AVInputFormat* format = av_probe_input_format3(&probe, 1, &score);
  return score > AVPROBE_SCORE_RETRY ? format : nullptr;
}

// Why libavformat could not open a file.
std::string openFailure(const std::string& path, int err) {
  if (err == AVERROR(ENOENT) || err == AVERROR(ENOTDIR)) return "no such file";
  if (err == AVERROR(EACCES) || err == AVERROR(EPERM)) return "permission denied";
  if (err == AVERROR(EISDIR)) return "a folder, not a picture or video file";
  if (err == AVERROR_INVALIDDATA || err == AVERROR_PROTOCOL_NOT_FOUND || err == AVERROR_DEMUXER_NOT_FOUND) {
    if (const AVInputFormat* format = lookalike(path))
      return std::string("a damaged or cut short ") + (format->long_name ? format->long_name : format->name) + " file";
    return "not a picture or video file";
  }
  return "cannot be read: " + errorText(err);
}

// The swscale matrix for a YUV frame: the one it is tagged with, else what
// pictures of its size are made with (BT.709 for HD, BT.601 below).
int matrixFor(const AVFrame* f, AVColorSpace stream) {
  const AVColorSpace tagged = f->colorspace != AVCOL_SPC_UNSPECIFIED ? f->colorspace : stream;
  switch (tagged) {
  case AVCOL_SPC_BT709:
    return SWS_CS_ITU709;
  case AVCOL_SPC_FCC:
    return SWS_CS_FCC;
  case AVCOL_SPC_BT470BG:
  case AVCOL_SPC_SMPTE170M:
    return SWS_CS_ITU601;
  case AVCOL_SPC_SMPTE240M:
    return SWS_CS_SMPTE240M;
  case AVCOL_SPC_BT2020_NCL:
  case AVCOL_SPC_BT2020_CL:
    return SWS_CS_BT2020;
  default:
    return f->height >= 720 || f->width >= 1280 ? SWS_CS_ITU709 : SWS_CS_ITU601;
  }
}

// The JPEG formats are their plain twins at full range.
AVPixelFormat withoutJpegRange(AVPixelFormat format, bool& fullRange) {
  AVPixelFormat plain = format;
  switch (format) {
  case AV_PIX_FMT_YUVJ420P:
    plain = AV_PIX_FMT_YUV420P;
    break;
  case AV_PIX_FMT_YUVJ422P:
    plain = AV_PIX_FMT_YUV422P;
    break;
  case AV_PIX_FMT_YUVJ444P:
    plain = AV_PIX_FMT_YUV444P;
    break;
  case AV_PIX_FMT_YUVJ440P:
    plain = AV_PIX_FMT_YUV440P;
    break;
  case AV_PIX_FMT_YUVJ411P:
    plain = AV_PIX_FMT_YUV411P;
    break;
  default:
    return format;
  }
  fullRange = true;
  return plain;
}

uint32_t premultiplied(uint32_t p) {
  const uint32_t a = p >> 24;
  if (a == 255) return p;
  if (a == 0) return 0;
  const auto scale = [a](uint32_t c) {
    const uint32_t t = c * a + 128;
    return (t + (t >> 8)) >> 8;
  };
  return a << 24 | scale(p >> 16 & 255) << 16 | scale(p >> 8 & 255) << 8 | scale(p & 255);
}

} // namespace

struct MediaDecoder::State {
  enum class Step { frame, end, gaveUp };

  std::string path;
  AVFormatContext* format = nullptr;
  AVCodecContext* codec = nullptr;
  SwsContext* sws = nullptr;
  AVPacket* packet = av_packet_alloc();
  // The frame reached, and the one decoded after it when it has been.
  AVFrame* cur = av_frame_alloc();
  AVFrame* next = av_frame_alloc();
  bool haveCur = false;
  bool haveNext = false;
  bool draining = false; // the decoder was told the packets ended
  bool ended = false;    // and has given its last frame
  int stream = -1;
  FrameIndex index; // learnt while decoding
  int64_t frameTicks = 1;
  int64_t lastPts = AV_NOPTS_VALUE;
  int budget = 0;
  int width = 0;
  int height = 0;
  double duration = 0;
  double frameRate = 0;
  int64_t seeks = 0;
  int64_t decoded = 0;

  State() = default;
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() {
    close();
    sws_freeContext(sws);
    av_packet_free(&packet);
    av_frame_free(&cur);
    av_frame_free(&next);
  }

  void close() {
    avcodec_free_context(&codec);
    avformat_close_input(&format);
    haveCur = haveNext = false;
  }

  int64_t ticks(double seconds) const { return index.ticks(seconds); }
  int64_t start() const { return index.start_.value_or(0); }

  bool openInput(std::string& why);
  bool readFromTop(std::string& why);
  Step decodeNext(AVFrame* f);
  void decodeForward(int64_t target);
  bool seek(int64_t target, std::string& why);
  bool displayShape(AVFrame* f, int& w, int& h, std::string& why) const;
  Ux::Ptr<UxImage> convert(AVFrame* f, std::string& why);

  void restartDecoding() {
    avcodec_flush_buffers(codec);
    av_frame_unref(cur);
    av_frame_unref(next);
    haveCur = haveNext = draining = ended = false;
    lastPts = AV_NOPTS_VALUE;
  }
  void advance() {
    std::swap(cur, next);
    av_frame_unref(next);
    haveNext = false;
  }
  void link(int64_t from, int64_t to) {
    if (to <= from) return;
    if (index.spans_.size() >= maxSpans) index.spans_.clear();
    index.spans_[from] = to;
  }
};

bool MediaDecoder::State::openInput(std::string& why) {
  sizeComplaint.clear();
  AVDictionary* options = nullptr;
  // Only local files: a playlist must not send the library to the network.
  av_dict_set(&options, "protocol_whitelist", "file", 0);
  // A picture's name is the one file, never a numbered sequence.
  av_dict_set(&options, "pattern_type", "none", 0);
  // "file:" keeps a name with a colon from being taken for another protocol.
  const std::string url = "file:" + path;
  const int opened = avformat_open_input(&format, url.c_str(), nullptr, &options);
  av_dict_free(&options);
  if (opened < 0) {
    why = openFailure(path, opened);
    return false;
  }
  // The teletype demuxer takes any text file for a picture of its text.
  if (std::strcmp(format->iformat->name, "tty") == 0) {
    why = "not a picture or video file";
    return false;
  }
  // Probing decodes a little of each stream: no larger pictures than we take.
  std::vector<AVDictionary*> probing(format->nb_streams, nullptr);
  for (auto& d : probing) av_dict_set_int(&d, "max_pixels", int64_t(maxSide) * maxSide, 0);
  // A failure here is not final: the first frame decides.
  avformat_find_stream_info(format, probing.empty() ? nullptr : probing.data());
  for (auto& d : probing) av_dict_free(&d);

  const AVCodec* decoder = nullptr;
  stream = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
  if (stream < 0) {
    why = "no video stream";
    for (unsigned i = 0; i < format->nb_streams; ++i)
      if (format->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
        why = std::string("no decoder for its ") + avcodec_get_name(format->streams[i]->codecpar->codec_id) + " video";
    return false;
  }
  AVStream* st = format->streams[stream];
  if (st->codecpar->width > maxSide || st->codecpar->height > maxSide) {
    why = tooLarge();
    return false;
  }
  for (unsigned i = 0; i < format->nb_streams; ++i)
    format->streams[i]->discard = int(i) == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;

  const std::string codecName = avcodec_get_name(st->codecpar->codec_id);
  codec = avcodec_alloc_context3(decoder);
  if (!codec || avcodec_parameters_to_context(codec, st->codecpar) < 0) {
    why = "out of memory";
    return false;
  }
  codec->pkt_timebase = st->time_base;
  codec->max_pixels = int64_t(maxSide) * maxSide;
  // Several files decode at once on their own threads; one each is enough.
  codec->thread_count = 1;
  if (avcodec_open2(codec, decoder, nullptr) < 0) {
    why = "its " + codecName + " video cannot be decoded";
    return false;
  }

  if (st->time_base.num > 0 && st->time_base.den > 0) {
    index.unitNum_ = st->time_base.num;
    index.unitDen_ = st->time_base.den;
  }
  AVRational rate = st->avg_frame_rate;
  if (rate.num <= 0 || rate.den <= 0) rate = st->r_frame_rate;
  frameRate = rate.num > 0 && rate.den > 0 ? av_q2d(rate) : 0;
  frameTicks = frameRate > 0 ? std::max<int64_t>(1, ticks(1 / frameRate)) : 1;
  if (st->duration != AV_NOPTS_VALUE && st->duration > 0)
    duration = double(st->duration) * double(index.unitNum_) / double(index.unitDen_);
  else if (format->duration != AV_NOPTS_VALUE && format->duration > 0)
    duration = double(format->duration) / AV_TIME_BASE;
  if (st->start_time != AV_NOPTS_VALUE) index.start_ = clampTs(st->start_time);
  return true;
}

// Decodes the first frame and the one after, from the file as opened.
bool MediaDecoder::State::readFromTop(std::string& why) {
  av_frame_unref(cur);
  av_frame_unref(next);
  haveCur = haveNext = draining = ended = false;
  lastPts = AV_NOPTS_VALUE;
  budget = packetBudget;
  if (decodeNext(cur) != Step::frame) {
    why = refusedForSize() ? tooLarge() : "no picture could be decoded: the file is damaged or cut short";
    return false;
  }
  haveCur = true;
  index.first_ = cur->pts;
  if (!index.start_) index.start_ = cur->pts;
  decodeForward(cur->pts);
  return true;
}

// The next frame in the order shown, its timestamp in pts.
MediaDecoder::State::Step MediaDecoder::State::decodeNext(AVFrame* f) {
  for (;;) {
    const int got = avcodec_receive_frame(codec, f);
    if (got == 0) {
      int64_t pts = f->best_effort_timestamp;
      if (pts == AV_NOPTS_VALUE) pts = lastPts != AV_NOPTS_VALUE ? lastPts + frameTicks : start();
      f->pts = lastPts = clampTs(pts);
      ++decoded;
      return Step::frame;
    }
    if (got == AVERROR_EOF) return Step::end;
    if (budget-- <= 0) return Step::gaveUp;
    // Any other failure is one damaged picture: go on to the next.
    if (got != AVERROR(EAGAIN) || draining) continue;
    const int read = av_read_frame(format, packet);
    if (read == AVERROR(EAGAIN)) continue;
    if (read < 0) {
      // The end of the file, or as far as it can be read: take what the
      // decoder still holds.
      draining = true;
      avcodec_send_packet(codec, nullptr);
      continue;
    }
    if (packet->stream_index == stream) avcodec_send_packet(codec, packet); // a damaged packet is dropped
    av_packet_unref(packet);
  }
}

// From the frame reached, on to the last that starts at or before the
// target (the frame reached when the file ends or the budget runs out).
void MediaDecoder::State::decodeForward(int64_t target) {
  for (;;) {
    if (!haveNext) {
      if (ended) return;
      const Step step = decodeNext(next);
      if (step == Step::end) {
        ended = true;
        link(cur->pts, never);
      }
      if (step != Step::frame) return;
      haveNext = true;
      link(cur->pts, next->pts);
    }
    if (next->pts > target) return;
    advance();
  }
}

// To the key frame at or before the target, then on to it. Where that
// lands after the target (an index that misleads, or none: a search by
// timestamp finds a packet but not its key frame), further back, to before
// the start at last; where even that fails, the file is read again from the
// top.
bool MediaDecoder::State::seek(int64_t target, std::string& why) {
  const int64_t top = clampTs(start() - ticks(10));
  const int64_t earlier[] = {target, clampTs(target - ticks(1)), clampTs(target - ticks(10)), top};
  int64_t tried = never;
  for (const int64_t wanted : earlier) {
    const int64_t ts = std::max(wanted, top);
    if (ts >= tried) continue;
    tried = ts;
    if (av_seek_frame(format, stream, ts, AVSEEK_FLAG_BACKWARD) < 0) continue;
    ++seeks;
    restartDecoding();
    budget = packetBudget;
    if (decodeNext(cur) != Step::frame) continue;
    haveCur = true;
    if (cur->pts > target && !(index.first_ && cur->pts <= *index.first_)) continue;
    decodeForward(target);
    return true;
  }
  ++seeks;
  close();
  if (!openInput(why) || !readFromTop(why)) {
    close();
    return false;
  }
  budget = packetBudget;
  decodeForward(target);
  return true;
}

int64_t MediaDecoder::FrameIndex::ticks(double seconds) const {
  if (std::isnan(seconds)) return 0;
  const double t = seconds * double(unitDen_) / double(unitNum_);
  if (t >= double(tsLimit)) return tsLimit;
  if (t <= double(-tsLimit)) return -tsLimit;
  // Down to the tick a time is in (a frame starting after it is not shown
  // yet), less what the sum above may lose.
  return int64_t(std::floor(t + 1e-6));
}

int64_t MediaDecoder::FrameIndex::timestampAt(double seconds) const {
  return clampTs(start_.value_or(0) + ticks(seconds));
}

std::optional<int64_t> MediaDecoder::FrameIndex::keyAtTimestamp(int64_t ts) const {
  if (first_ && ts < *first_) return first_;
  auto it = spans_.upper_bound(ts);
  if (it == spans_.begin()) return std::nullopt;
  --it;
  if (ts < it->second) return it->first;
  return std::nullopt;
}

std::optional<int64_t> MediaDecoder::FrameIndex::keyAt(double seconds) const {
  if (!start_) return std::nullopt;
  return keyAtTimestamp(timestampAt(seconds));
}

void MediaDecoder::FrameIndex::keepOnly(const std::function<bool(int64_t)>& keep) {
  std::erase_if(spans_, [&](const auto& span) { return !keep(span.first); });
  if (first_ && !keep(*first_)) first_.reset();
}

// The frame's size with its pixels made square (the width stretched).
bool MediaDecoder::State::displayShape(AVFrame* f, int& w, int& h, std::string& why) const {
  if (f->width <= 0 || f->height <= 0) {
    why = "a frame has no size";
    return false;
  }
  const AVRational sar = av_guess_sample_aspect_ratio(format, format->streams[stream], f);
  double aspect = sar.num > 0 && sar.den > 0 ? av_q2d(sar) : 1;
  if (aspect < 0.1 || aspect > 10) aspect = 1; // nonsense, not a shape
  const double shown = std::max(1.0, std::round(f->width * aspect));
  if (f->width > maxSide || f->height > maxSide || shown > maxSide) {
    why = tooLarge();
    return false;
  }
  w = int(shown);
  h = f->height;
  return true;
}

Ux::Ptr<UxImage> MediaDecoder::State::convert(AVFrame* f, std::string& why) {
  int w = 0, h = 0;
  if (!displayShape(f, w, h, why)) return nullptr;
  bool fullRange = f->color_range == AVCOL_RANGE_JPEG;
  const auto source = withoutJpegRange(AVPixelFormat(f->format), fullRange);
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(source);
  if (!desc || (desc->flags & AV_PIX_FMT_FLAG_HWACCEL)) {
    why = "its pictures are in a form that cannot be converted";
    return nullptr;
  }
  // Chroma taken at every pixel keeps greys and colour edges true; accurate
  // rounding would double the time for a level or so.
  sws = sws_getCachedContext(sws, f->width, f->height, source, w, h, AV_PIX_FMT_RGB32, SWS_BICUBIC | SWS_FULL_CHR_H_INT,
                             nullptr, nullptr, nullptr);
  if (!sws) {
    why = std::string("its ") + desc->name + " pictures cannot be converted";
    return nullptr;
  }
  if (!(desc->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL))) {
    // Grey pictures are full range unless they say not; colour ones limited
    // unless they say full.
    const bool grey = desc->nb_components <= 2;
    const int range = grey ? f->color_range != AVCOL_RANGE_MPEG : fullRange;
    const int* matrix = sws_getCoefficients(grey ? SWS_CS_DEFAULT : matrixFor(f, codec->colorspace));
    sws_setColorspaceDetails(sws, matrix, range, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
  }

  // Converted into a buffer of the library's own alignment, then copied.
  AVFrame* rgb = av_frame_alloc();
  if (!rgb) {
    why = "out of memory";
    return nullptr;
  }
  rgb->format = AV_PIX_FMT_RGB32;
  rgb->width = w;
  rgb->height = h;
  if (av_frame_get_buffer(rgb, 0) < 0 ||
      sws_scale(sws, f->data, f->linesize, 0, f->height, rgb->data, rgb->linesize) != h) {
    av_frame_free(&rgb);
    why = "a frame could not be converted";
    return nullptr;
  }
  Ux::Ptr<UxImage> image(new UxImage(w, h));
  const bool alpha = desc->flags & AV_PIX_FMT_FLAG_ALPHA;
  for (int y = 0; y < h; ++y) {
    uint32_t* row = image->row(y);
    std::memcpy(row, rgb->data[0] + std::ptrdiff_t(y) * rgb->linesize[0], std::size_t(w) * 4);
    if (alpha)
      for (int x = 0; x < w; ++x) row[x] = premultiplied(row[x]);
    else
      for (int x = 0; x < w; ++x) row[x] |= 0xff000000u;
  }
  av_frame_free(&rgb);
  return image;
}

MediaDecoder::MediaDecoder(std::unique_ptr<State> state) noexcept : s_(std::move(state)) {}
MediaDecoder::~MediaDecoder() = default;

std::unique_ptr<MediaDecoder> MediaDecoder::open(const std::string& path, std::string& why) {
  // The libraries' messages go to keepSizeComplaint, never to standard error.
  static std::once_flag quiet;
  std::call_once(quiet, [] { av_log_set_callback(keepSizeComplaint); });

  struct stat info {};
  if (path.empty() || ::stat(path.c_str(), &info) != 0) {
    why = path.empty() || errno == ENOENT || errno == ENOTDIR ? "no such file"
                                                              : "cannot be read: " + std::string(std::strerror(errno));
    return nullptr;
  }
  if (S_ISDIR(info.st_mode)) {
    why = "a folder, not a picture or video file";
    return nullptr;
  }
  // A device or pipe could read on without end.
  if (!S_ISREG(info.st_mode)) {
    why = "not a picture or video file";
    return nullptr;
  }
  if (info.st_size == 0) {
    why = "the file is empty";
    return nullptr;
  }
  auto state = std::make_unique<State>();
  if (!state->packet || !state->cur || !state->next) {
    why = "out of memory";
    return nullptr;
  }
  state->path = path;
  if (!state->openInput(why) || !state->readFromTop(why)) return nullptr;
  if (!state->displayShape(state->cur, state->width, state->height, why)) return nullptr;
  return std::unique_ptr<MediaDecoder>(new MediaDecoder(std::move(state)));
}

Ux::Ptr<UxImage> MediaDecoder::frameAt(double seconds, std::string& why) {
  if (!goTo(seconds, why)) return nullptr;
  return picture(why);
}

bool MediaDecoder::goTo(double seconds, std::string& why) {
  State& s = *s_;
  if (!s.codec) {
    why = "the file could not be read again";
    return false;
  }
  const int64_t target = s.index.timestampAt(seconds);
  if (const auto key = s.index.keyAtTimestamp(target)) {
    if (s.haveCur && s.cur->pts == *key) return true;
    if (s.haveNext && s.next->pts == *key) {
      s.advance();
      return true;
    }
  }
  if (s.haveCur && target >= s.cur->pts) {
    const int64_t reached = s.haveNext ? s.next->pts : s.cur->pts;
    if (target <= reached || target - reached <= s.ticks(scrubAhead)) {
      s.budget = packetBudget;
      s.decodeForward(target);
      return true;
    }
  }
  return s.seek(target, why);
}

int64_t MediaDecoder::frameKey() const noexcept { return s_->haveCur ? s_->cur->pts : AV_NOPTS_VALUE; }

Ux::Ptr<UxImage> MediaDecoder::picture(std::string& why) {
  if (!s_->haveCur) {
    why = "no frame has been decoded";
    return nullptr;
  }
  return s_->convert(s_->cur, why);
}

std::optional<int64_t> MediaDecoder::knownFrameKey(double seconds) const { return s_->index.keyAt(seconds); }

const MediaDecoder::FrameIndex& MediaDecoder::index() const noexcept { return s_->index; }

void MediaDecoder::adopt(const FrameIndex& earlier) {
  FrameIndex& own = s_->index;
  // Only what was learnt of the same stream in the same units.
  if (earlier.unitNum_ != own.unitNum_ || earlier.unitDen_ != own.unitDen_ || earlier.start_ != own.start_) return;
  for (const auto& span : earlier.spans_) own.spans_.insert(span);
}

int MediaDecoder::width() const noexcept { return s_->width; }
int MediaDecoder::height() const noexcept { return s_->height; }
double MediaDecoder::duration() const noexcept { return s_->duration; }
double MediaDecoder::frameRate() const noexcept { return s_->frameRate; }
const std::string& MediaDecoder::path() const noexcept { return s_->path; }
int64_t MediaDecoder::seeks() const noexcept { return s_->seeks; }
int64_t MediaDecoder::framesDecoded() const noexcept { return s_->decoded; }
