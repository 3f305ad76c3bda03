// The modem player itself, met by a plain program that reads and writes its pseudo-terminal.
#include <poll.h>

#include "modem_player.h"

namespace {

using namespace atcmd_test;
using std::string;

class PlayerTest : public AtcmdTest {
 protected:
  void TearDown() override {
    if (fd_ >= 0) close(fd_);
    modem_.reset();
    AtcmdTest::TearDown();
  }

  // A player on a transcript of these lines; time ends its pauses.
  void start(const string& lines, std::vector<string> options = {}) {
    fairlead_test::put_file("/tmp/transcript", lines);
    options.push_back("/tmp/transcript");
    modem_.emplace(options, false);
    fd_ = open(Modem::kLink, O_RDWR | O_NOCTTY | O_CLOEXEC);
  }

  void say(const string& text) const {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), write(fd_, text.data(), text.size()));
  }

  // What the modem says: a given text, or what there is when it hangs up or nothing comes.
  string hear(size_t length, int milliseconds = 20000) const {
    string text;
    char piece[4096];
    for (pollfd line = {fd_, POLLIN, 0}; text.size() < length;) {
      if (poll(&line, 1, milliseconds) != 1) break;
      const ssize_t got = read(fd_, piece, sizeof piece);
      if (got <= 0) break;
      text.append(piece, static_cast<size_t>(got));
    }
    return text;
  }

  string ask(const string& command, const string& answer) const {
    say(command + "\r\n");
    return hear(answer.size());
  }

  std::optional<Modem> modem_;
  int fd_ = -1;
};

// A player that is not expected to get as far as a terminal.
fairlead_test::Ended refused(std::vector<string> arguments) {
  arguments.insert(arguments.begin(), PLAYER);
  return fairlead_test::run_child([&] {
    std::vector<char*> words;
    for (string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    execv(PLAYER, words.data());
    return 127;
  });
}

TEST_F(PlayerTest, player_echoes_and_frames_answers) {
  const string answer = "ATI\r\r\nOne\r\nTwo\r\n\r\nOK\r\n";
  start("# ignored\n\n> ATI\n< One\n| Two\n< OK\n");
  EXPECT_EQ(answer, ask("ATI", answer));
  EXPECT_EQ("", hear(1));
  const auto ended = modem_->wait();
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ(0u, ended.out.rfind("/dev/pts/", 0)) << ended.out;
  EXPECT_FALSE(fairlead_test::exists(Modem::kLink));
}

TEST_F(PlayerTest, player_sends_bytes_as_they_are) {
  const string answer("AT\r\0\xff\\\t\r\n> ", 11);
  start("> AT\n= \\x00\\xFf\\\\\\t\\r\\n> \n");
  EXPECT_EQ(answer, ask("AT", answer));
  EXPECT_EQ(0, modem_->wait().status);
}

TEST_F(PlayerTest, player_waits_between_lines) {
  const misc_test::Stopwatch watch;
  const string answer = "AT\r\r\nOK\r\n\r\n+CREG: 1\r\n";
  start("> AT\n< OK\n~ 300\n! +CREG: 1\n");
  EXPECT_EQ(answer, ask("AT", answer));
  EXPECT_GE(watch.seconds(), 0.3);
  EXPECT_EQ(0, modem_->wait().status);
}

TEST_F(PlayerTest, echo_is_the_transcripts_or_the_options) {
  const string lines = "echo off\n> AT\n< OK\n";
  start(lines);
  EXPECT_EQ("\r\nOK\r\n", ask("AT", "\r\nOK\r\n"));
  EXPECT_EQ(0, modem_->wait().status);
  close(fd_);
  start(lines, {"--echo", "on"});
  EXPECT_EQ("AT\r\r\nOK\r\n", ask("AT", "AT\r\r\nOK\r\n"));
  EXPECT_EQ(0, modem_->wait().status);
}

TEST_F(PlayerTest, split_sends_an_answer_in_two_pieces) {
  start("> AT\n< OK\n", {"--split", "5", "--pause", "500"});
  say("AT\r");
  EXPECT_EQ("AT\r\r\n", hear(5));
  EXPECT_EQ("", hear(1, 100));
  EXPECT_EQ("OK\r\n", hear(4));
  EXPECT_EQ(0, modem_->wait().status);
}

TEST_F(PlayerTest, insert_at_sends_a_line_at_a_gap) {
  const char* answers[] = {"\r\nRING\r\nAT\r\r\nOK\r\n", "AT\r\r\nRING\r\n\r\nOK\r\n",
                           "AT\r\r\nOK\r\n\r\nRING\r\n", "AT\r\r\nOK\r\n"};
  for (int gap = 0; gap < 4; ++gap) {
    start("> AT\n< OK\n", {"--insert-at", std::to_string(gap), "RING"});
    EXPECT_EQ(answers[gap], ask("AT", answers[gap]));
    EXPECT_EQ(0, modem_->wait().status);
    close(std::exchange(fd_, -1));
  }
}

TEST_F(PlayerTest, each_plays_a_round_per_place) {
  start("> AT\n< OK\n", {"--split", "each", "--pause", "1"});
  const string command = "AT\r", answer = "AT\r\r\nOK\r\n";
  int rounds = 0;
  // Behind the last round the player leaves, and the line ends.
  while (write(fd_, command.data(), command.size()) > 0 && hear(answer.size()) == answer) ++rounds;
  EXPECT_EQ(8, rounds) << "cut behind byte 1 to 8 of 9";
  EXPECT_EQ(0, modem_->wait().status);
}

TEST_F(PlayerTest, another_command_than_expected_ends_the_play) {
  start("> AT\n< OK\n> ATI\n< OK\n");
  ask("AT", "AT\r\r\nOK\r\n");
  say("ATH\r\n");
  const auto ended = modem_->wait();
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("modem-player: /tmp/transcript:3: expected 'ATI', heard 'ATH'\n", ended.err);
}

TEST_F(PlayerTest, serve_answers_in_any_order_and_refuses_the_rest) {
  start("> AT\n< OK\n> ATI\n< EW-620\n< OK\n", {"--serve"});
  EXPECT_EQ("ATI\r\r\nEW-620\r\n\r\nOK\r\n", ask("ATI", "ATI\r\r\nEW-620\r\n\r\nOK\r\n"));
  EXPECT_EQ("ATX\r\r\nERROR\r\n", ask("ATX", "ATX\r\r\nERROR\r\n"));
  EXPECT_EQ("AT\r\r\nOK\r\n", ask("AT", "AT\r\r\nOK\r\n"));
  modem_->send(SIGTERM);
  EXPECT_EQ(0, modem_->wait().status);
  EXPECT_FALSE(fairlead_test::exists(Modem::kLink));
}

TEST_F(PlayerTest, hang_up_ends_the_line) {
  start("> AT\n< OK\nhang up\n> AT\n");
  EXPECT_EQ("AT\r\r\nOK\r\n", ask("AT", "AT\r\r\nOK\r\n"));
  EXPECT_EQ("", hear(1)) << "end of file";
  EXPECT_EQ(0, modem_->wait().status);
}

TEST_F(PlayerTest, a_link_of_an_earlier_run_is_replaced_and_a_file_is_not) {
  ASSERT_EQ(0, symlink("/dev/pts/none", "/tmp/link"));
  fairlead_test::put_file("/tmp/file", "precious");
  fairlead_test::put_file("/tmp/transcript", "> AT\n");
  const auto ended = refused({"--link", "/tmp/file", "/tmp/transcript"});
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("modem-player: /tmp/file: File exists\n", ended.err);
  EXPECT_EQ("precious", fairlead_test::file_content("/tmp/file"));
  fairlead_test::Child player([] {
    execl(PLAYER, PLAYER, "--link", "/tmp/link", "/tmp/transcript", nullptr);
    return 127;
  });
  for (int round = 0; round < 20000 && access("/tmp/link", F_OK) != 0; ++round) usleep(1000);
  EXPECT_EQ(0, access("/tmp/link", F_OK));
  player.send(SIGINT);
  EXPECT_EQ(0, player.wait().status);
}

TEST_F(PlayerTest, player_tells_what_it_does_not_understand) {
  EXPECT_EQ("modem-player: /tmp/none: No such file or directory\n", refused({"/tmp/none"}).err);
  const std::pair<const char*, const char*> transcripts[] = {
      {"> AT\nOK\n", "modem-player: /tmp/transcript:2: not understood\n"},
      {"> AT\n= \\q\n", "modem-player: /tmp/transcript:2: not understood\n"},
      {"> AT\n= \\x1\n", "modem-player: /tmp/transcript:2: not understood\n"},
      {"> AT\n~ long\n", "modem-player: /tmp/transcript:2: not understood\n"},
      {"< OK\n", "modem-player: /tmp/transcript: no command is waited for in it\n"},
      {"", "modem-player: /tmp/transcript: no command is waited for in it\n"}};
  for (auto [lines, message] : transcripts) {
    fairlead_test::put_file("/tmp/transcript", lines);
    const auto ended = refused({"/tmp/transcript"});
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ(message, ended.err);
  }
}

TEST_F(PlayerTest, player_refuses_options_it_does_not_know) {
  const std::vector<string> lines[] = {{},
                                       {"--loud", "x", "t"},
                                       {"--split", "x", "t"},
                                       {"--split"},
                                       {"--pause", "-1", "t"},
                                       {"--echo", "maybe", "t"},
                                       {"--insert-at", "1"},
                                       {"a", "b"},
                                       {"--split", "each", "--insert-at", "each", "RING", "t"}};
  for (const auto& arguments : lines) {
    const auto ended = refused(arguments);
    EXPECT_EQ(2, ended.status);
    EXPECT_NE(string::npos, ended.err.find("try 'modem-player --help'\n")) << ended.err;
  }
  const auto help = refused({"--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_EQ(0u, help.out.rfind("usage: modem-player ", 0));
}

}  // namespace
