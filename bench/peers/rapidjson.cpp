#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <memory>

#include "peer.h"

namespace bench {

namespace {

using Document = rapidjson::Document;

Document* as_document(void* document) { return static_cast<Document*>(document); }

void* parse(const std::string& text) {
  auto document = std::make_unique<Document>();
  document->Parse(text.c_str());
  return document->HasParseError() ? nullptr : document.release();
}

void print(void* document) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  as_document(document)->Accept(writer);
}

void* copy(void* document) {
  auto made = std::make_unique<Document>();
  made->CopyFrom(*as_document(document), made->GetAllocator());
  return made.release();
}

const char* find(void* document, Names path) {
  const rapidjson::Value* at = as_document(document);
  for (const char* name : path) at = &at->FindMember(name)->value;
  return at->GetString();
}

}  // namespace

const Peer rapidjson_peer = {
    .name = "RapidJSON",
    .parse = parse,
    .print = print,
    .drop = [](void* document) { delete as_document(document); },
    .copy = copy,
    .equal = [](void* document,
                void* other) { return *as_document(document) == *as_document(other); },
    .merge = nullptr,
    .find = find,
};

}  // namespace bench
