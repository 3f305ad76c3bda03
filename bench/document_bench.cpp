// Documents beside other libraries: parse, serialise, free, copy, compare, merge and look-up.
// Names are WORK/DOCUMENT/LIBRARY, which the report makes ratios of.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <vector>

#include "documents.h"
#include "peers/peer.h"

namespace {

using bench::Peer;
using benchmark::State;

// A document that ends with the scope.
class Held {
 public:
  Held(const Peer& peer, void* document) : peer_(peer), document_(document) {
    if (!document) abort();
  }
  Held(const Peer& peer, const std::string& text) : Held(peer, peer.parse(text)) {}
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { peer_.drop(document_); }
  void* get() const { return document_; }

 private:
  const Peer& peer_;
  void* document_;
};

void parse_and_free(State& state, const Peer& peer, const std::string& text) {
  for (auto _ : state) Held document(peer, text);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

// The processor's time, which other work on the machine does not lengthen, in seconds.
double processor_time() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Small documents are taken together, so that the clock costs little beside the work, but no more
// than stay in the cache.
size_t batch_of(const std::string& text) { return std::clamp<size_t>(65'536 / text.size(), 1, 64); }

template <class Prepare, class Work>
void by_batch(State& state, const std::string& text, Prepare prepare, Work work) {
  const size_t batch = batch_of(text);
  std::vector<void*> documents(batch);
  for (auto _ : state) {
    for (void*& document : documents) document = prepare();
    const double begin = processor_time();
    for (void*& document : documents) document = work(document);
    state.SetIterationTime((processor_time() - begin) / static_cast<double>(batch));
    for (void* document : documents)
      if (document) state.SkipWithError("a document is left");
  }
}

void parse(State& state, const Peer& peer, const std::string& text) {
  const size_t batch = batch_of(text);
  std::vector<void*> documents(batch);
  for (auto _ : state) {
    const double begin = processor_time();
    for (void*& document : documents) document = peer.parse(text);
    state.SetIterationTime((processor_time() - begin) / static_cast<double>(batch));
    for (void* document : documents) peer.drop(document);
  }
}

void free_document(State& state, const Peer& peer, const std::string& text) {
  by_batch(
      state, text, [&] { return peer.parse(text); },
      [&](void* document) -> void* {
        peer.drop(document);
        return nullptr;
      });
}

void serialise(State& state, const Peer& peer, const std::string& text) {
  Held document(peer, text);
  for (auto _ : state) peer.print(document.get());
}

void copy(State& state, const Peer& peer, const std::string& text) {
  Held document(peer, text);
  for (auto _ : state) Held made(peer, peer.copy(document.get()));
}

void compare(State& state, const Peer& peer, const std::string& text) {
  Held one(peer, text), other(peer, text);
  for (auto _ : state)
    if (!peer.equal(one.get(), other.get())) state.SkipWithError("not equal");
}

// All members are there already and all values are replaced.
void merge(State& state, const Peer& peer, const std::string& text) {
  Held document(peer, text), changes(peer, text);
  for (auto _ : state) peer.merge(document.get(), changes.get());
}

void find(State& state, const Peer& peer, const std::string& text) {
  Held document(peer, text);
  const std::array path = {"interface5", "static", "gateway"};
  for (auto _ : state) benchmark::DoNotOptimize(peer.find(document.get(), path));
}

using Work = void (*)(State&, const Peer&, const std::string&);

benchmark::internal::Benchmark* add(const char* work_name, Work work, const std::string& name,
                                    const Peer& peer, const std::string& text) {
  return benchmark::RegisterBenchmark(
      (std::string(work_name) + "/" + name + "/" + peer.name).c_str(),
      [=, &peer](State& state) { work(state, peer, text); });
}

// One iteration of these is long enough, and searching for a better number is not.
constexpr size_t kLarge = 1 << 20;

// With so many members these take half a minute for what others do in a tenth of a second.
bool looks_up_from_the_front(const Peer& peer) {
  return &peer == &bench::cjson_peer || &peer == &bench::rapidjson_peer;
}

// cJSON compares each member twice, and so what is n levels down 2^n times.
bool ends(const Peer& comparer, const bench::Document& document) {
  return &comparer != &bench::cjson_peer || document.name != "deep_800";
}

// A fixed number where most of an iteration is not measured, and the time would never be had.
benchmark::IterationCount rounds(const std::string& text) {
  const size_t batch = batch_of(text);
  return static_cast<benchmark::IterationCount>(
      std::max<size_t>(1, 400'000 / (text.size() * batch)));
}

void add_documents() {
  for (const bench::Document& document : bench::documents()) {
    for (const Peer* peer : bench::kPeers) {
      const auto add_work = [&](const char* work_name, Work work) {
        auto* made = add(work_name, work, document.name, *peer, document.text);
        return document.text.size() > kLarge ? made->Iterations(1) : made;
      };
      add_work("parse", parse)->UseManualTime()->Iterations(rounds(document.text));
      add_work("free", free_document)->UseManualTime()->Iterations(rounds(document.text));
      add_work("parse+free", parse_and_free);
      add_work("serialise", serialise);
      add_work("copy", copy);
      auto* comparing = ends(*peer, document) ? add_work("compare", compare) : nullptr;
      auto* merging = peer->merge ? add_work("merge", merge) : nullptr;
      if (document.text.size() <= kLarge || !looks_up_from_the_front(*peer)) continue;
      if (comparing) comparing->Repetitions(1);
      if (merging) merging->Repetitions(1);
    }
  }
  for (const Peer* peer : bench::kPeers)
    add("look-up", find, "configuration_4KB", *peer, bench::document("configuration_4KB"));
}

// How the cost of a member grows with their number. The others look each name up from the front, so
// only we are asked.
void add_growth() {
  for (const size_t members : {10, 1000, 100'000}) {
    const std::string text = bench::wide(members);
    const std::string name = "members_" + std::to_string(members);
    add("growth-copy", copy, name, bench::fairlead_peer, text);
    add("growth-compare", compare, name, bench::fairlead_peer, text);
    add("growth-merge", merge, name, bench::fairlead_peer, text);
  }
}

}  // namespace

int main(int count, char** arguments) {
  add_documents();
  add_growth();
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
