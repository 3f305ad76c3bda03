// Speeds and the DTR line.
#include "atcmd_support.h"

namespace {

using atcmd_test::Line;
using atcmd_test::logged;

class SerialTest : public atcmd_test::AtcmdTest {};

TEST_F(SerialTest, n2speed_gives_the_code_of_each_speed) {
  const std::pair<int, speed_t> speeds[] = {
      {50, B50},       {75, B75},         {110, B110},       {134, B134},       {150, B150},
      {200, B200},     {300, B300},       {600, B600},       {1200, B1200},     {1800, B1800},
      {2400, B2400},   {4800, B4800},     {9600, B9600},     {19200, B19200},   {38400, B38400},
      {57600, B57600}, {115200, B115200}, {230400, B230400}, {460800, B460800}, {921600, B921600}};
  for (auto [speed, code] : speeds) EXPECT_EQ(code, serial_n2speed(speed)) << speed;
}

TEST_F(SerialTest, n2speed_of_0_is_0_without_a_word) {
  const auto log = logged([] { EXPECT_EQ(0u, serial_n2speed(0)); });
  EXPECT_EQ("", log.errors + log.debug);
}

TEST_F(SerialTest, n2speed_refuses_and_logs_every_other_speed) {
  for (int speed : {1, -9600, 14400, 921601, 1000000}) {
    const auto log = logged([&] { EXPECT_EQ(0u, serial_n2speed(speed)); });
    EXPECT_EQ("115: speed " + std::to_string(speed) + " not supported\n", log.errors);
  }
}

// Makes one request of ioctl(2) fail with an errno of its own, in this process.
bool refuse_request(unsigned request, int error) {
  const sock_filter filter[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_ioctl, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS,
               offsetof(seccomp_data, args[1]) + (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? 4 : 0)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, request, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program = {std::size(filter), const_cast<sock_filter*>(filter)};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// A pseudo-terminal has no modem lines, so what is asked for is told by the way it is refused.
TEST_F(SerialTest, setdtr_asks_to_raise_or_drop_the_line) {
  Line line;
  for (auto [on, request] : {std::pair{0, TIOCMBIC}, {1, TIOCMBIS}, {-1, TIOCMBIS}}) {
    fairlead_test::run_child([&, on = on, request = request] {
      const int fd = open(line.device(), atcmd_test::kLineFlags | O_CLOEXEC);
      EXPECT_EQ(-1, serial_setdtr(fd, on));
      EXPECT_EQ(ENOTTY, errno);
      if (!refuse_request(static_cast<unsigned>(request), ENOTBLK)) return;
      EXPECT_EQ(-1, serial_setdtr(fd, on));
      EXPECT_EQ(ENOTBLK, errno);
      EXPECT_EQ(-1, serial_setdtr(fd, !on));
      EXPECT_EQ(ENOTTY, errno);
    });
  }
}

TEST_F(SerialTest, setdtr_passes_errno_on) {
  EXPECT_EQ(-1, serial_setdtr(-1, 1));
  EXPECT_EQ(EBADF, errno);
}

}  // namespace
