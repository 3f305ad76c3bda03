// The default parser, called directly: what completes an exchange, and what stays in the buffer.
#include "atcmd_support.h"

namespace {

using std::string;

constexpr int kPositive = 0, kIncomplete = 2, kNegative = 5;

class ParserTest : public atcmd_test::OpenDeviceTest {
 protected:
  void SetUp() override {
    OpenDeviceTest::SetUp();
    parser_ = atcmd_->parser;
    notify_ = atcmd_->notify;
  }

  int parse(const string& received, const char* command, const char* expect = nullptr,
            uint32_t flags = ATCMD_ECHO) {
    memset(atcmd_->receive_buffer, 0, sizeof atcmd_->receive_buffer);
    memcpy(atcmd_->receive_buffer, received.data(), received.size());
    atcmd_->received_length = static_cast<int>(received.size());
    strcpy(atcmd_->last_acknowledgement, "before");
    return parser_(atcmd_, command, expect, flags);
  }

  string rest() const {
    return {atcmd_->receive_buffer, static_cast<size_t>(atcmd_->received_length)};
  }

  atcmd_parser_t parser_ = nullptr;
  atcmd_notify_t notify_ = nullptr;
};

struct Case {
  const char* received;
  const char* command;
  const char* expect;
  uint32_t flags;
  int result;
  const char* last;
};

TEST_F(ParserTest, parser_decides_by_the_text_received) {
  const Case cases[] = {
      // With echo.
      {"AT\r\r\nOK\r\n", "AT", nullptr, 4, kPositive, "OK\r"},
      {"AT\r\r\nERROR\r\n", "AT", nullptr, 4, kNegative, "ERROR\r"},
      {"AT\r\r\n+CME ERROR: 10\r\n", "AT", nullptr, 4, kNegative, "+CME ERROR: 10\r"},
      {"AT+CSQ\r\r\n+CSQ: 9,0\r\n\r\nOK\r\n", "AT+CSQ", nullptr, 4, kPositive,
       "+CSQ: 9,0\r\n\r\nOK\r"},
      {"noise AT\r\r\nOK\r\n", "AT", nullptr, 4, kPositive, "OK\r"},
      {"A", "AT", nullptr, 4, kIncomplete, "before"},
      {"\r\nOK\r\n", "AT", nullptr, 4, kIncomplete, "before"},
      {"AT", "AT", nullptr, 4, kIncomplete, "before"},
      {"AT\r\r\nO", "AT", nullptr, 4, kIncomplete, "before"},
      {"AT\r\r\nOK\r", "AT", nullptr, 4, kIncomplete, "before"},
      {"AT\r\r\nERROR", "AT", nullptr, 4, kIncomplete, "before"},
      {"AT\r\r\n+CSQ: 9,0\r\n", "AT", nullptr, 4, kIncomplete, "before"},
      // Without.
      {"\r\nOK\r\n", "AT", nullptr, 2, kPositive, "OK\r"},
      {" \t\r\n OK\n", "AT", nullptr, 2, kPositive, "OK"},
      {"AT\r\r\nOK\r\n", "AT", nullptr, 2, kPositive, "AT\r\r\nOK\r"},
      {"\r\n", "AT", nullptr, 2, kIncomplete, "before"},
      // What is expected.
      {"AT\r\r\nDONE\r\n", "AT", "DONE", 4, kPositive, "DONE\r"},
      {"AT\r\r\nOK\r\n", "AT", "DONE", 4, kIncomplete, "before"},
      {"AT\r\r\nOK\r\n", "AT", "", 4, kIncomplete, "before"},
      {"AT\r\r\nERROR\r\n", "AT", "", 4, kNegative, "ERROR\r"},
      {"AT\r\r\nERROR\r\n", "AT", "ERROR", 4, kPositive, "ERROR\r"},
      // Pieces of text, not lines: kept for programs that rely on it.
      {"AT+COPS?\r\r\n+COPS: 0,0,\"TOKYO\"\r\n\r\nOK\r\n", "AT+COPS?", nullptr, 4, kPositive,
       "+COPS: 0,0,\"TOKYO\"\r"},
      {"AT\r\r\n2 ERRORS, OK\r\n", "AT", nullptr, 4, kPositive, "2 ERRORS, OK\r"},
      {"AT\r\r\nERROR\r\nOK", "AT", nullptr, 4, kIncomplete, "before"},
      // Dialling.
      {"ATD", "ATD*99#", nullptr, 4, kIncomplete, "before"},
      {"ATD*99#", "ATD*99#", nullptr, 4, kPositive, "OK"},
      {"ATD*99#\r\r\n", "ATD*99#", nullptr, 4, kPositive, "OK"},
      {"ATD*99#\r\r\nNO CARRIER\r\n", "ATD*99#", nullptr, 4, kPositive, "OK"},
      {"ATD*99#\r\r\nCONNECT", "ATD*99#", "CONNECT", 4, kPositive, "OK"},
      {"ATD*99#\r\r\nCONNECT 150000000\r\n", "ATD*99#", "CONNECT", 4, kPositive,
       "CONNECT 150000000\r"},
      {"ATD*99#\r\r\nERR", "ATD*99#", nullptr, 4, kPositive, "OK"},
      {"ATD*99#\r\r\nERROR\r\n", "ATD*99#", nullptr, 4, kNegative, "ERROR\r"},
      {"\r\n", "ATD*99#", nullptr, 2, kPositive, "OK"},
      {"AT+X;ATD1\r", "AT+X;ATD1", nullptr, 4, kPositive, "OK"},
      // Without a command.
      {"\r\n+CREG: 1\r\n", nullptr, nullptr, 4, kPositive, "before"},
      {"\r\n+CREG: 1\r\n", "", "", 4, kPositive, "before"},
      {"\r\nERROR\r\n", nullptr, nullptr, 4, kNegative, "ERROR\r"},
      {"\r\nERROR", nullptr, nullptr, 4, kPositive, "before"},
      {"\r\n+CMTI: \"SM\",3\r\n", nullptr, "+CMTI", 4, kPositive, "+CMTI: \"SM\",3\r"},
      {"\r\n+CMTI: \"SM", nullptr, "+CMTI", 4, kIncomplete, "before"},
      {"\r\n+CREG: 1\r\n", nullptr, "+CMTI", 4, kIncomplete, "before"},
      {"\r\nERROR\r\n", nullptr, "+CMTI", 4, kIncomplete, "before"},
      {"\r\n+CREG: 1\r\n\r\n+CMTI: 3\r\n", nullptr, "+CMTI", 4, kPositive,
       "+CREG: 1\r\n\r\n+CMTI: 3\r"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(string(c.received) + " | " + (c.command ? c.command : "null"));
    EXPECT_EQ(c.result, parse(c.received, c.command, c.expect, c.flags));
    EXPECT_EQ(c.last, last());
  }
}

TEST_F(ParserTest, parser_refuses_no_handle_and_an_empty_buffer) {
  EXPECT_EQ(-2, parser_(nullptr, "AT", nullptr, ATCMD_ECHO));
  EXPECT_EQ(kNegative, parse("", "AT"));
  EXPECT_EQ(kNegative, parse("", nullptr));
}

TEST_F(ParserTest, an_incomplete_reply_stays_in_the_buffer_with_its_echo) {
  for (const char* received : {"\r\nA", "AT\r", "AT\r\r\n+CSQ: 9", "AT\r\r\nO", "AT\r\r\nERROR"}) {
    EXPECT_EQ(kIncomplete, parse(received, "AT"));
    EXPECT_EQ(received, rest());
  }
}

TEST_F(ParserTest, what_follows_a_complete_reply_moves_to_the_front) {
  EXPECT_EQ(kPositive, parse("AT\r\r\nOK\r\n\r\n+CREG: 1\r\n", "AT"));
  EXPECT_EQ("\r\n+CREG: 1\r\n", rest());
  EXPECT_EQ('\0', atcmd_->receive_buffer[atcmd_->received_length]);
  EXPECT_EQ(kNegative, parse("AT\r\r\nERROR\r\nX", "AT"));
  EXPECT_EQ("X", rest());
}

TEST_F(ParserTest, a_complete_reply_without_a_rest_stays_but_for_its_end) {
  EXPECT_EQ(kPositive, parse("AT\r\r\nOK\r\n", "AT"));
  EXPECT_EQ(9, atcmd_->received_length);
  EXPECT_EQ(string("AT\r\r\nOK\r\0", 9), rest());
}

// Whatever the reply was cut through, the next look finds it whole.
TEST_F(ParserTest, a_reply_that_grows_byte_by_byte_completes_once) {
  const string whole = "AT+CSQ\r\r\n+CSQ: 20,99\r\n\r\nOK\r\n";
  for (size_t length = 1; length < whole.size(); ++length)
    EXPECT_EQ(kIncomplete, parse(whole.substr(0, length), "AT+CSQ")) << length;
  EXPECT_EQ(kPositive, parse(whole, "AT+CSQ"));
}

TEST_F(ParserTest, a_full_buffer_is_parsed_within_its_bounds) {
  EXPECT_EQ(kIncomplete, parse("AT\r" + string(1020, 'x'), "AT"));
  EXPECT_EQ(kPositive, parse("AT\r" + string(1016, 'x') + "OK\r\n", "AT"));
  EXPECT_EQ(string(1016, 'x') + "OK\r", last());
}

TEST_F(ParserTest, a_zero_byte_from_the_line_hides_nothing) {
  EXPECT_EQ(kPositive, parse(string("\0\0AT\r\r\nOK\r\n", 12), "AT"));
  EXPECT_EQ("OK\r", last());
  EXPECT_EQ(kPositive, parse(string("AT\r\r\n\0+CSQ\0: 9\r\nOK\r\0\n", 21), "AT"));
  EXPECT_EQ("+CSQ: 9\r\nOK\r", last());
  EXPECT_EQ(kNegative, parse(string("AT\r\0\0ERROR\r\nX", 13), "AT"));
  EXPECT_EQ("ERROR\r", last());
  EXPECT_EQ("X", rest());
}

TEST_F(ParserTest, default_notify_empties_the_buffer_for_null_only) {
  parse("AT\r\r\nO", "AT");
  EXPECT_EQ(0, notify_(atcmd_, "AT"));
  EXPECT_EQ("AT\r\r\nO", rest());
  EXPECT_EQ(0, notify_(atcmd_, nullptr));
  EXPECT_EQ(0, atcmd_->received_length);
  EXPECT_EQ("", buffer());
}

}  // namespace
