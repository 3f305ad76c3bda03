// Whole sessions with a modem in another process: every answer arrives in two pieces, cut at every
// place in turn, and with an unsolicited line at every gap.
#include "modem_player.h"

namespace {

using namespace atcmd_test;
using std::string;

struct Exchange {
  const char* command;
  const char* expect;
  int result;
  const char* last;
  uint32_t flags = 0;
};

struct Session {
  const char* name;
  std::vector<Exchange> exchanges;
};

void PrintTo(const Session& session, std::ostream* out) { *out << session.name; }

const Session kSessions[] = {
    {"identification",
     {{"AT", nullptr, 0, "OK\r"},
      {"ATI", nullptr, 0, "Example Wireless\r\nEW-620\r\nRevision: EW620R03A07\r\n\r\n\r\nOK\r"},
      {"AT+CGMI", nullptr, 0, "Example Wireless\r\n\r\nOK\r"},
      {"AT+CGMM", nullptr, 0, "EW-620\r\n\r\nOK\r"},
      {"AT+CGMR", nullptr, 0, "EW620R03A07M2G\r\n\r\nOK\r"},
      {"AT+CGSN", nullptr, 0, "490154203237518\r\n\r\nOK\r"},
      {"ATE0", nullptr, 0, "OK\r"},
      {"AT+CIMI", nullptr, 0, "001010123456789\r\n\r\nOK\r", ATCMD_TRACE}}},
    {"signal",
     {{"AT+CSQ", nullptr, 0, "+CSQ: 21,99\r\n\r\nOK\r"},
      {"AT+CESQ", nullptr, 0, "+CESQ: 99,99,255,255,23,52\r\n\r\nOK\r"},
      {"AT+CSQ=?", nullptr, 0, "+CSQ: (0-31,99),(0-7,99)\r\n\r\nOK\r"}}},
    {"registration",
     {{"AT+CEREG=2", nullptr, 0, "OK\r"},
      {"AT+CEREG?", nullptr, 0, "+CEREG: 2,2\r\n\r\nOK\r"},
      {nullptr, "+CEREG: 1", 0, "+CEREG: 1,\"2BC0\",\"01A2D101\",7\r"},
      {"AT+CEREG?", nullptr, 0, "+CEREG: 2,1,\"2BC0\",\"01A2D101\",7\r\n\r\nOK\r"},
      {"AT+CREG?", nullptr, 0, "+CREG: 0,1\r\n\r\nOK\r"}}},
    {"operator",
     {{"AT+COPS?", nullptr, 0, "+COPS: 0,0,\"Test Net\",7\r\n\r\nOK\r"},
      {"AT+COPS=3,2", nullptr, 0, "OK\r"},
      {"AT+COPS?", nullptr, 0, "+COPS: 0,2,\"00101\",7\r\n\r\nOK\r"},
      {"AT+COPS=?", nullptr, 0,
       "+COPS: (2,\"Test Net\",\"TNet\",\"00101\",7),(1,\"Other Net\",\"ONet\",\"00102\",7),,(0-4),"
       "(0-2)\r\n\r\nOK\r"}}},
    {"sim",
     {{"AT+CPIN?", nullptr, 0, "+CPIN: SIM PIN\r\n\r\nOK\r"},
      {"AT+CPIN=\"1234\"", nullptr, 0, "OK\r"},
      {nullptr, "+CPIN", 0, "+CPIN: READY\r"},
      {"AT+CPIN?", nullptr, 0, "+CPIN: READY\r\n\r\nOK\r"},
      {"AT+CCID", nullptr, 0, "+CCID: 8988211000000000000F\r\n\r\nOK\r"}}},
    {"sim-errors",
     {{"AT+CMEE=1", nullptr, 0, "OK\r"},
      {"AT+CPIN?", nullptr, 5, "+CME ERROR: 10\r"},
      {"AT+CIMI", nullptr, 5, "+CME ERROR: 10\r"},
      {"AT+CMEE=2", nullptr, 0, "OK\r"},
      {"AT+CPIN?", nullptr, 5, "+CME ERROR: SIM not inserted\r"}}},
    {"sms",
     {{"AT+CMGF=1", nullptr, 0, "OK\r"},
      {"AT+CNMI=2,1", nullptr, 0, "OK\r"},
      {"AT+CMGL=\"ALL\"", nullptr, 0,
       "+CMGL: 1,\"REC READ\",\"+491701234567\",,\"25/11/20,08:15:42+04\"\r\nRestart at noon\r\n"
       "\r\n+CMGL: 2,\"REC UNREAD\",\"+491701234567\",,\"25/11/20,09:02:10+04\"\r\n"
       "Report your status\r\n\r\n\r\nOK\r"},
      {nullptr, "+CMTI", 0, "+CMTI: \"SM\",3\r"},
      {"AT+CMGR=3", nullptr, 0,
       "+CMGR: \"REC UNREAD\",\"+491701234567\",,\"25/11/21,07:59:03+04\"\r\nAll is well\r\n"
       "\r\n\r\nOK\r"},
      {"AT+CMGD=3", nullptr, 0, "OK\r"}}},
    {"dial",
     {{"AT+CGDCONT=1,\"IP\",\"internet\"", nullptr, 0, "OK\r"},
      {"ATD*99#", nullptr, 0, "OK"},
      {nullptr, "CONNECT", 0, "CONNECT 150000000\r"},
      {nullptr, "NO CARRIER", 0, "NO CARRIER\r"},
      {"ATH", nullptr, 0, "OK\r"}}},
    {"errors",
     {{"AT+NONE", nullptr, 5, "ERROR\r"},
      {"AT+CMEE=1", nullptr, 0, "OK\r"},
      {"AT+CGDCONT=99,\"IP\"", nullptr, 5, "+CME ERROR: 50\r"},
      {"AT+COPS=1,2,\"99999\"", nullptr, 5, "+CME ERROR: 30\r"},
      {"AT+CMGR=200", nullptr, 5, "+CMS ERROR: 321\r"},
      {"AT+CSCA=\"\"", nullptr, 5, "+CMS ERROR: 330\r"},
      {"AT", nullptr, 0, "OK\r"}}},
    {"router",
     {{"AT", nullptr, 0, "OK\r"},
      {"ATI", nullptr, 0, "Example Wireless\r\nEW-620\r\nRevision: EW620R03A07\r\n\r\n\r\nOK\r"},
      {"AT+CPIN?", nullptr, 0, "+CPIN: READY\r\n\r\nOK\r"},
      {"AT+CSQ", nullptr, 0, "+CSQ: 21,99\r\n\r\nOK\r"},
      {"AT+CEREG?", nullptr, 0, "+CEREG: 0,1\r\n\r\nOK\r"},
      {"AT+COPS?", nullptr, 0, "+COPS: 0,0,\"Test Net\",7\r\n\r\nOK\r"},
      {"AT+CGATT?", nullptr, 0, "+CGATT: 1\r\n\r\nOK\r"}}},
};

constexpr int kHungUp = 1;
constexpr char kUnsolicited[] = "+QIND: \"act\",\"LTE\"";

class SessionTest : public AtcmdTest, public testing::WithParamInterface<Session> {
 protected:
  void TearDown() override {
    if (atcmd_) atcmd_close(atcmd_);
    AtcmdTest::TearDown();
  }

  // True when the modem still was there.
  bool play_round(const std::function<string(const string&)>& shown) {
    for (const Exchange& exchange : GetParam().exchanges) {
      SCOPED_TRACE(exchange.command ? exchange.command : exchange.expect);
      const int result = atcmd_send(atcmd_, exchange.command, 20, exchange.expect, exchange.flags);
      const bool gone = result == kHungUp || (result == -1 && errno == EIO);
      if (gone && &exchange == &GetParam().exchanges.front()) return false;
      EXPECT_EQ(exchange.result, result);
      EXPECT_EQ(exchange.last, shown(atcmd_lastack(atcmd_)));
      if (HasFailure()) return false;
    }
    return true;
  }

  // Plays until the modem has no more rounds, and counts them.
  int play_all(Modem& modem, const std::function<string(const string&)>& shown) {
    atcmd_ = modem.open();
    EXPECT_NE(nullptr, atcmd_);
    int rounds = 0;
    while (atcmd_) {
      SCOPED_TRACE("round " + std::to_string(rounds));
      if (!play_round(shown)) break;
      ++rounds;
    }
    if (HasFailure()) modem.send(SIGKILL);  // it may wait for the rest of the round
    const auto ended = modem.wait();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
    return rounds;
  }

  // The longest answer that is told by the exchanges, which the player counts with its echo.
  size_t longest_acknowledgement() const {
    size_t longest = 0;
    for (const Exchange& exchange : GetParam().exchanges)
      if (strlen(exchange.last) > longest) longest = strlen(exchange.last);
    return longest;
  }

  atcmd_t* atcmd_ = nullptr;
};

string as_it_is(const string& last) { return last; }

TEST_P(SessionTest, answers_in_one_piece) {
  Modem modem({transcript(GetParam().name)});
  EXPECT_EQ(1, play_all(modem, as_it_is));
}

TEST_P(SessionTest, answers_cut_at_every_byte) {
  Modem modem({"--split", "each", transcript(GetParam().name)});
  const int rounds = play_all(modem, as_it_is);
  EXPECT_GT(rounds, static_cast<int>(longest_acknowledgement()));
}

// What is left of an acknowledgement without the line that came in between.
string without_unsolicited(const string& last, int& found) {
  const string line = string(kUnsolicited) + "\r\n";
  const size_t at = last.find(line);
  if (at == string::npos) return last;
  ++found;
  // At the beginning, the blank line before the next one is the acknowledgement's no more.
  if (at == 0)
    return last.substr(std::min(last.find_first_not_of("\r\n", line.size()), last.size()));
  EXPECT_EQ("\r\n", last.substr(at - 2, 2));
  return last.substr(0, at - 2) + last.substr(at + line.size());
}

TEST_P(SessionTest, an_unsolicited_line_at_every_gap) {
  Modem modem({"--insert-at", "each", kUnsolicited, transcript(GetParam().name)});
  int found = 0;
  const int rounds =
      play_all(modem, [&](const string& last) { return without_unsolicited(last, found); });
  EXPECT_GE(rounds, 3) << "before the echo, behind it, behind the answer";
  EXPECT_GE(found, static_cast<int>(GetParam().exchanges.size()) / 2);
}

INSTANTIATE_TEST_SUITE_P(Transcripts, SessionTest, testing::ValuesIn(kSessions),
                         [](const testing::TestParamInfo<Session>& session) {
                           string name = session.param.name;
                           for (char& c : name)
                             if (c == '-') c = '_';
                           return name;
                         });

// ---- Trouble ----

class TroubleTest : public AtcmdTest {};

TEST_F(TroubleTest, noise_silence_half_an_answer_and_a_hang_up) {
  Modem modem({string(TEST_TRANSCRIPTS) + "/trouble.transcript"});
  atcmd_t* atcmd = modem.open();
  ASSERT_NE(nullptr, atcmd);
  EXPECT_EQ(0, atcmd_send(atcmd, "AT", 20, nullptr, 0)) << "noise before the echo's answer";
  EXPECT_EQ(4, atcmd_send(atcmd, "AT+CFUN=1", 1, nullptr, 0)) << "the echo only";
  EXPECT_EQ(4, atcmd_send(atcmd, "AT+CFUN?", 1, nullptr, 0)) << "silence";
  EXPECT_EQ(4, atcmd_send(atcmd, "AT+CSQ", 1, nullptr, ATCMD_TRACE)) << "half a line";
  EXPECT_EQ(0, atcmd_send(atcmd, "AT", 20, nullptr, ATCMD_TRACE));
  EXPECT_STREQ("OK\r", atcmd_lastack(atcmd));
  EXPECT_EQ(1, atcmd_send(atcmd, "AT+CPOWD=1", 20, "POWERED DOWN", 0));
  EXPECT_EQ(-1, atcmd_send(atcmd, "AT", 20, nullptr, 0)) << "nothing can be written any more";
  EXPECT_EQ(EIO, errno);
  EXPECT_EQ(1, atcmd_close(atcmd));
  EXPECT_EQ(0, modem.wait().status);
}

// Many exchanges over one handle; a device is open for months.
TEST_F(TroubleTest, a_thousand_exchanges_over_one_handle) {
  Modem modem({"--serve", transcript("router")});
  atcmd_t* atcmd = modem.open();
  ASSERT_NE(nullptr, atcmd);
  for (int round = 0; round < 1000; ++round) {
    ASSERT_EQ(0, atcmd_send(atcmd, "AT+CSQ", 20, nullptr, 0)) << round;
    ASSERT_STREQ("+CSQ: 21,99\r\n\r\nOK\r", atcmd_lastack(atcmd));
  }
  EXPECT_EQ(1, atcmd_close(atcmd));
  modem.send(SIGTERM);
  EXPECT_EQ(0, modem.wait().status);
}

}  // namespace
