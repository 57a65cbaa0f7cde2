// The stream store on a Samba share: a private smbd on a loopback port shares a temporary
// folder with vfs_streams_xattr, and smbclient plays the Windows PC.
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <thread>

#include "platform/xattr.h"
#include "stores/ntfs_streams.h"
#include "stores/summary_info_codec.h"
#include "tests/loop_volume.h"
#include "tests/streams.h"

namespace {

const std::string kSummary = "\x05SummaryInformation";
const std::string kSambaSummary = "DosStream." + kSummary + ":$DATA";

constexpr std::string_view kConfig = R"([global]
  lock directory = @/lock
  state directory = @/state
  cache directory = @/cache
  pid directory = @/pid
  private dir = @/private
  ncalrpc dir = @/ncalrpc
  log file = @/smbd.log
  smb ports = PORT
  interfaces = lo
  bind interfaces only = yes
  map to guest = Bad User
[share]
  path = @/share
  guest ok = yes
  read only = no
  force user = root
  vfs objects = streams_xattr
)";

// Binds port 0 (the kernel picks a free port, or 0 asks it whether `port` listens).
int loopbackSocket(int port, bool connectToIt) {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    auto* any = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    int result = connectToIt ? ::connect(fd, any, size)
                             : (::bind(fd, any, size) == 0 && ::getsockname(fd, any, &size) == 0
                                    ? ntohs(address.sin_port)
                                    : -1);
    ::close(fd);
    return result;
}

// smbd with a configuration and state of its own below the temporary folder, in a
// process group of its own, which the destructor ends, connections included.
class SambaServer {
public:
    explicit SambaServer(const TempDir& dir) : m_dir(dir) {}
    ~SambaServer() {
        if (m_pid <= 0)
            return;
        ::kill(-m_pid, SIGTERM);
        for (int tries = 0; tries < 50 && ::waitpid(m_pid, nullptr, WNOHANG) == 0; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        ::kill(-m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }

    // "" when the server answers on its port, else why it does not.
    std::string start() {
        m_port = loopbackSocket(0, false);
        std::string config(kConfig);
        for (std::size_t at; (at = config.find('@')) != std::string::npos;)
            config.replace(at, 1, m_dir.path() + "smb");
        config.replace(config.find("PORT"), 4, std::to_string(m_port));
        for (const char* folder : {"lock", "state", "cache", "pid", "private", "share"})
            m_dir.mkdir(std::string("smb/") + folder);
        writeFileBytes(m_dir / "smb/smb.conf", config);
        if ((m_pid = ::fork()) == 0) {
            ::setpgid(0, 0);
            // Even a test that crashes takes the server with it.
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            ::execlp("smbd", "smbd", "--foreground", "--no-process-group", "--configfile",
                     (m_dir / "smb/smb.conf").c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
        for (int tries = 0; tries < 100 && ::waitpid(m_pid, nullptr, WNOHANG) == 0; ++tries) {
            if (loopbackSocket(m_port, true) == 0)
                return "";
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return "smbd did not start: " + readFileBytes(m_dir / "smb/smbd.log").substr(0, 300);
    }

    // Runs smbclient's commands on the share as a guest; its exit code.
    int client(const std::string& commands) const {
        return runShell("smbclient -N -p " + std::to_string(m_port) + " -s '" +
                        (m_dir / "smb/smb.conf") + "' //127.0.0.1/share -c '" + commands + "'");
    }

private:
    const TempDir& m_dir;
    int m_port = 0;
    pid_t m_pid = -1;
};

class SambaShareTest : public ::testing::Test {
protected:
    WriteResult save(const std::string& text) {
        state_.target.targetFileFullPathname = file_;
        editor_.setText(text);
        return updateNTFSDesc(state_, editor_);
    }
    // A stream of f.txt on the share written from bytes, or read back.
    int put(const std::string& stream, const std::string& bytes) {
        return server_.client("put " + dir_.write("upload", bytes) + " \"f.txt" + stream + "\"");
    }
    std::string get(const std::string& stream) {
        writeFileBytes(dir_ / "download", "(nothing)");
        EXPECT_EQ(server_.client("get \"f.txt" + stream + "\" " + (dir_ / "download")), 0);
        return readFileBytes(dir_ / "download");
    }

    TempDir dir_;
    SambaServer server_{dir_};
    std::string file_ = dir_ / "smb/share/f.txt";
    SharedState state_;
    PlainEditorState editor_;
};

// What the Windows PC wrote reads here, old stream included; what is saved here reads
// there, byte for byte, with the marker made and the old stream emptied.
TEST_F(SambaShareTest, WindowsAndVeskorReadEachOthersDescription) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "smbd needs root to serve a share";
    if (std::string reason = server_.start(); !reason.empty())
        GTEST_SKIP() << reason;
    const std::string fromWindows = createSummaryInfo("Set on the PC");
    for (const auto& [stream, bytes] : {std::pair<std::string, std::string>{"", "content"},
                                        {":" + kSummary, fromWindows},
                                        {":description", "old"}})
        ASSERT_EQ(put(stream, bytes), 0) << stream;
    EXPECT_EQ(readNTFSDesc(file_) + "|" + readOldNTFSDesc(file_), "Set on the PC|old");

    ASSERT_EQ(save("Saved by Veskor\r\n\xCE\xA9"), WriteResult::Ok);
    const std::string saved = updateSummaryInfo(fromWindows, "Saved by Veskor\r\n\xCE\xA9");
    EXPECT_EQ(get(":" + kSummary), saved);
    EXPECT_EQ(get(":{4c8cc155-6c1e-11d1-8e41-00c04fb9386d}") + get(":description"), "");
    EXPECT_EQ(streamOf(file_, kSummary), saved);
}

// Only a file that Samba marked gets Samba's naming. On ext4 a file's attributes share
// one block: a summary that fits once but not twice leaves no stale copy for Windows.
TEST_F(SambaShareTest, WritesSambasNamingOnlyBesideSambasMarks) {
    writeFileBytes(file_, "content");
    if (replaceStream(file_, "probe", "x") != StreamStatus::Ok)
        GTEST_SKIP() << "the temporary folder keeps no user extended attributes";
    ASSERT_EQ(save("Local"), WriteResult::Ok);
    EXPECT_EQ(streamOf(file_, kSambaSummary), std::nullopt);

    ASSERT_EQ(replaceStream(file_, "DOSATTRIB", std::string("\0\0\5\0", 4)), StreamStatus::Ok);
    ASSERT_EQ(save("Marked"), WriteResult::Ok);
    EXPECT_EQ(streamOf(file_, kSambaSummary), createSummaryInfo("Marked") + '\0');

    const std::string half(2200, 'h');
    if (save(half) != WriteResult::Ok || streamOf(file_, kSummary) != createSummaryInfo(half) ||
        replaceStream(dir_.write("g.txt", ""), "probe", std::string(4400, 'x')) == StreamStatus::Ok)
        GTEST_SKIP() << "the temporary folder keeps more than one block of attributes";
    EXPECT_EQ(streamOf(file_, kSambaSummary), std::nullopt);
}

}  // namespace
