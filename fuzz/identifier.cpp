// An identifier: its pieces, put together again, make an identifier of the same pieces.
#include "fairlead/talk.h"
#include "fairlead/uii.h"
#include "fuzzing.h"

namespace {

using fairlead::OwnedTalk;
using fuzzing::text_of;

struct UiiFreer {
  void operator()(uii_t* uii) const { UiiFree(uii); }
};
using OwnedUii = std::unique_ptr<uii_t, UiiFreer>;

OwnedUii parsed(const std::string& text) {
  return OwnedUii(UiiCreate(fuzzing::ExactText(text).get()));
}

std::string given(const char* text) { return text ? text : "<none>"; }

struct Parts {
  int kind;
  std::string object, interface, parameters, config, value;
  bool operator==(const Parts&) const = default;
};

Parts parts_of(uii_t* uii) {
  return {uii->kind,
          given(UiiObjectString(uii)),
          given(UiiInterface(uii)),
          given(UiiParamString(uii)),
          given(UiiConfigString(uii)),
          given(UiiValueString(uii))};
}

void check_counts(uii_t* uii) {
  REQUIRE(UiiObjectCount(uii) >= 1);
  for (int i = 1; i <= UiiObjectCount(uii); ++i) REQUIRE(*UiiObject(uii, i));
  for (int i = 1; i <= UiiConfigCount(uii); ++i) REQUIRE(*UiiConfig(uii, i));
  for (int i = 1; i <= UiiParamCount(uii); ++i) REQUIRE(UiiParamGet(uii, i));
  REQUIRE(!UiiParamGet(uii, UiiParamCount(uii) + 1));
  REQUIRE(uii->kind == UII_CALL || !UiiInterface(uii));
}

// The request document says the same as the identifier.
void check_request(uii_t* uii, const Parts& parts) {
  const OwnedTalk request(UiiTalk(uii));
  REQUIRE(request);
  REQUIRE(VesselGetS(request.get(), "adp") == parts.object);
  REQUIRE(!VesselFind(request.get(), "fn") == !UiiInterface(uii));
  if (VesselFind(request.get(), "ab")) REQUIRE(VesselGetS(request.get(), "ab") == parts.config);
  if (VesselFind(request.get(), "op"))
    REQUIRE(VesselGetS(request.get(), "op") == std::string(uii->kind == UII_SET ? "=" : "|"));
  for (int i = 1; i <= UiiParamCount(uii); ++i) {
    talk_t* const parameter = UiiInterface(uii) ? UiiParamGetT(uii, i) : nullptr;
    axp_t* const told = VesselFind(request.get(), std::to_string(i).c_str());
    REQUIRE(!told == !parameter);
    if (!told) continue;
    const OwnedTalk copy(TalkDup(parameter));
    REQUIRE(text_of(AxpGetX(told)) == text_of(copy.get()));
  }
}

// Where a call has a name and parameters that stand for themselves.
void check_assembly(uii_t* uii, const Parts& parts) {
  if (!UiiInterface(uii) || parts.interface.empty() || parts.interface.size() > 63) return;
  char text[8192];
  REQUIRE(UiiAssembly(parts.object.c_str(), parts.interface.c_str(), UiiParamString(uii), text,
                      sizeof text) == text);
  if (parts.object.size() >= 255 || parts.object.find_first_of(".:=| \t\r\n") != std::string::npos)
    return;
  const OwnedUii again = parsed(text);
  REQUIRE(again && again->kind == UII_CALL);
  REQUIRE(given(UiiObjectString(again.get())) == parts.object);
}

}  // namespace

void fuzzing::prepare() { prepare_device(); }

void fuzzing::check(Input input) {
  const std::string text = ExactText(input.rest()).get();
  const OwnedUii uii = parsed(text);
  if (!uii) return;
  REQUIRE(given(UiiString(uii.get())) == text);
  const Parts parts = parts_of(uii.get());
  check_counts(uii.get());
  REQUIRE(parts_of(parsed(text).get()) == parts);
  if (talk_t* const value = UiiValueTalk(uii.get())) REQUIRE(UiiValueTalk(uii.get()) == value);
  check_request(uii.get(), parts);
  check_assembly(uii.get(), parts);

  REQUIRE(UiiAnalysis(uii.get()) == 1);
  REQUIRE(parts_of(uii.get()) == parts);
}
