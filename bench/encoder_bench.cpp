// MD5 beside a plain one in C at -O2, and base64 beside the base64 of the machine's coreutils.
// Each pair in turn, so that a change of the machine's speed meets both; ratios are of medians.
// The command's time includes its start and the file it reads; the library's begins in memory.
//
// usage: tools/device-root build/.../bench/encoder_bench [MEGABYTES [ROUNDS]]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fairlead/misc.h"
#include "peers/plain_md5.h"

namespace {

using Clock = std::chrono::steady_clock;

// Of the size the command reads. In one piece, more than half of the time is the kernel's, for the
// pages of a block of 133 MB that the command never has.
constexpr size_t kPiece = 48000;

struct Pair {
  std::vector<double> peer, own;
};

template <class Work>
double milliseconds(Work work) {
  const auto begin = Clock::now();
  work();
  return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double median(std::vector<double>& times) {
  std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
  return times[times.size() / 2];
}

void print(const char* what, const char* peer, Pair& pair) {
  const double peers = median(pair.peer), own = median(pair.own);
  printf("%s: %s %.0f ms, fairlead %.0f ms, ratio %.2f\n", what, peer, peers, own, own / peers);
}

void require(bool holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "encoder_bench: %s\n", what);
  exit(1);
}

void put_file(const char* path, const std::string& content) {
  FILE* file = fopen(path, "w");
  require(file && fwrite(content.data(), 1, content.size(), file) == content.size() &&
              fclose(file) == 0,
          "cannot write to /tmp");
}

void digest_once(const std::string& bytes, Pair& pair) {
  unsigned char expected[16], digest[16];
  pair.peer.push_back(milliseconds([&] {
    plain_md5(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), expected);
  }));
  pair.own.push_back(milliseconds([&] {
    md5_t context;
    md5_init(&context);
    md5_update(&context, bytes.data(), static_cast<unsigned>(bytes.size()));
    md5_final(&context, digest);
  }));
  require(memcmp(expected, digest, sizeof digest) == 0, "the digests differ");
}

void encode_in_pieces(const std::string& bytes) {
  for (size_t at = 0; at < bytes.size(); at += kPiece)
    free(encode64_block(bytes.data() + at, static_cast<int>(std::min(kPiece, bytes.size() - at))));
}

// The same command beside both: in pieces as the command does it, and in one.
void encode_once(const std::string& bytes, Pair& pieces, Pair& whole) {
  const double command = milliseconds(
      [] { require(system("base64 -w 0 /tmp/bytes >/dev/null") == 0, "no base64 command"); });
  pieces.peer.push_back(command);
  whole.peer.push_back(command);
  pieces.own.push_back(milliseconds([&] { encode_in_pieces(bytes); }));
  char* text = nullptr;
  whole.own.push_back(
      milliseconds([&] { text = encode64_block(bytes.data(), static_cast<int>(bytes.size())); }));
  require(text && strlen(text) == (bytes.size() + 2) / 3 * 4, "not encoded");
  free(text);
}

void decode_once(const std::string& bytes, const std::string& text, Pair& pair) {
  char* back = nullptr;
  pair.peer.push_back(milliseconds(
      [] { require(system("base64 -d /tmp/text >/dev/null") == 0, "no base64 command"); }));
  pair.own.push_back(milliseconds([&] { back = base64_decode(text.c_str()); }));
  require(back && bytes == back, "not decoded");
  free(back);
}

std::string some_bytes(size_t length) {
  std::string bytes(length, '\0');
  uint32_t random = 1;
  for (char& byte : bytes) {
    random = random * 1664525 + 1013904223;
    byte = static_cast<char>(random >> 24 ? random >> 24 : 1);  // encode64_block ends at a zero
  }
  return bytes;
}

}  // namespace

int main(int count, char** arguments) {
  const int megabytes = count > 1 ? atoi(arguments[1]) : 100;
  const int rounds = count > 2 ? atoi(arguments[2]) : 5;
  require(megabytes > 0 && megabytes < 500 && rounds > 0,
          "usage: encoder_bench [MEGABYTES, below 500 [ROUNDS]]");
  const std::string bytes = some_bytes(static_cast<size_t>(megabytes) * 1000000);
  char* encoded = encode64_block(bytes.data(), static_cast<int>(bytes.size()));
  require(encoded, "out of memory");
  const std::string text = encoded;
  free(encoded);
  put_file("/tmp/bytes", bytes);
  put_file("/tmp/text", text);

  Pair digest, pieces, whole, decode;
  for (int round = 0; round < rounds; ++round) {
    digest_once(bytes, digest);
    encode_once(bytes, pieces, whole);
    decode_once(bytes, text, decode);
  }
  remove("/tmp/bytes");
  remove("/tmp/text");
  printf("%d MB, medians of %d\n", megabytes, rounds);
  print("md5", "plain C", digest);
  print("base64 in pieces", "coreutils", pieces);
  print("base64 in one", "coreutils", whole);
  print("base64 -d", "coreutils", decode);
  return 0;
}
