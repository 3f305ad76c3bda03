// Documents beside other libraries: parse, serialise, free, copy, compare, merge and look-up.
// Names are WORK/DOCUMENT/LIBRARY, which the report makes ratios of.
#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdlib>
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

// Sixteen documents, or one where they are large, so that the clock costs little beside the work.
template <class Prepare, class Work>
void by_batch(State& state, const std::string& text, Prepare prepare, Work work) {
  const size_t batch = text.size() < 100'000 ? 16 : 1;
  std::vector<void*> documents(batch);
  for (auto _ : state) {
    for (void*& document : documents) document = prepare();
    const auto begin = std::chrono::steady_clock::now();
    for (void*& document : documents) document = work(document);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    state.SetIterationTime(passed.count() / static_cast<double>(batch));
    for (void* document : documents)
      if (document) state.SkipWithError("a document is left");
  }
}

void parse(State& state, const Peer& peer, const std::string& text) {
  const size_t batch = text.size() < 100'000 ? 16 : 1;
  std::vector<void*> documents(batch);
  for (auto _ : state) {
    const auto begin = std::chrono::steady_clock::now();
    for (void*& document : documents) document = peer.parse(text);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    state.SetIterationTime(passed.count() / static_cast<double>(batch));
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

void add_documents() {
  for (const bench::Document& document : bench::documents()) {
    for (const Peer* peer : bench::kPeers) {
      const auto add_work = [&](const char* work_name, Work work) {
        return add(work_name, work, document.name, *peer, document.text);
      };
      add_work("parse", parse)->UseManualTime();
      add_work("parse+free", parse_and_free);
      add_work("serialise", serialise);
      add_work("free", free_document)->UseManualTime();
      add_work("copy", copy);
      add_work("compare", compare);
      if (peer->merge) add_work("merge", merge);
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
