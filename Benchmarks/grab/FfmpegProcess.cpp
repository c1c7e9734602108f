#include "GrabMethod.h"

#include <QFile>
#include <QString>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace stillwick::benchmarks {

namespace {

/// The number of bytes that a program writes to its standard output; they are dropped.
/// *Errors*: std::runtime_error where it cannot be run or fails.
std::int64_t runAndCount(std::vector<std::string> arguments) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    pid_t process = 0;
    const int failure =
        posix_spawnp(&process, pointers.front(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::int64_t count = 0;
    std::vector<char> buffer(std::size_t(1) << 20U);
    for (ssize_t size = 0;
         failure == 0 && (size = read(ends[0], buffer.data(), buffer.size())) > 0;)
        count += size;
    close(ends[0]);
    int status = -1;
    if (failure != 0 || waitpid(process, &status, 0) != process || status != 0)
        throw std::runtime_error(arguments.front() + " failed");
    return count;
}

class FfmpegProcess final : public GrabMethod {
public:
    FfmpegProcess(const QString& path, const Clip& clip)
        : m_path(QFile::encodeName(path).toStdString()), m_clip(clip) {}

    void grab(const Moment& moment) override {
        // It gives the first frame not before the time: so that of the frame itself, rounded down.
        const AVRational timeBase = m_clip.stream().time_base;
        const std::int64_t start = av_rescale_q_rnd(m_clip.pictures()[moment.frame].time, timeBase,
                                                    {1, AV_TIME_BASE}, AV_ROUND_DOWN);
        const std::int64_t size = runAndCount(
            {"ffmpeg", "-v", "error", "-nostdin", "-ss", std::to_string(start) + "us", "-i", m_path,
             "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "rgba", "-"});
        const AVCodecParameters& parameters = *m_clip.stream().codecpar;
        if (size != std::int64_t(4) * parameters.width * parameters.height)
            throw std::runtime_error("ffmpeg gives no picture");
    }

private:
    std::string m_path;
    const Clip& m_clip;
};

} // namespace

std::unique_ptr<GrabMethod> makeFfmpegProcess(const QString& path, const Clip& clip) {
    return std::make_unique<FfmpegProcess>(path, clip);
}

} // namespace stillwick::benchmarks
