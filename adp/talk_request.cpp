// A whole request in a document.
#include "adp/request_steps.h"
#include "base/bounded_text.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/adp/request.h"
#include "fairlead/talk/node.h"
#include "fairlead/talk/text.h"
#include "talk/roles.h"
#include "uii/owned_uii.h"

namespace {

using namespace fairlead;

// The parameter list of members "1" to "20"; positions without a member are empty, and the list
// ends with the last one that is there. Numbers, arrays and literals have no text and are empty
// too.
class NumberedParameters {
 public:
  explicit NumberedParameters(vessel_t* request) {
    for (int number = 1; number <= PARAM_MAX; ++number) {
      FixedText<16> name;
      name.format("%d", number);
      axp_t* member = VesselFind(request, name.text());
      if (!member) continue;
      take_text(AxpGetX(member), text_[number - 1]);
      list_.count = number;
    }
    for (int index = 0; index < list_.count; ++index) {
      list_.entry[index] = zeroed<param_entry_t>().release();
      if (list_.entry[index])
        list_.entry[index]->text = text_[index].get();
      else
        complete_ = false;
    }
  }
  ~NumberedParameters() {
    ErrnoKeeper keep;
    ParamClear(&list_);
  }
  NumberedParameters(const NumberedParameters&) = delete;
  NumberedParameters& operator=(const NumberedParameters&) = delete;

  // False: memory ran out, or an object has a member without a value. The call must not be made.
  bool complete() const { return complete_; }
  param_t* list() { return &list_; }

 private:
  void take_text(talk_t* value, OwnedText& text) {
    if (!is_vessel(value) && !is_string_node(value)) return;
    text.reset(TalkString(value));
    if (!text) complete_ = false;
  }

  OwnedText text_[PARAM_MAX];  // what the entries' texts point to
  param_t list_{};
  bool complete_ = true;
};

bool is_data_operator(const char* op) { return !op || *op == '\0' || *op == '=' || *op == '|'; }

int32_t serve_data(const RequestRoad& road, const RequestTarget& target, const char* op,
                   talk_t* value, talk_t** out) {
  if (!value) return answer_read(road, target, out);
  if (op && *op == '=') return answer_set(road, target, value, out);
  return answer_merge(road, target, value, out);
}

int32_t serve(const RequestRoad& road, int32_t (*by_identifier)(uii_t*, talk_t**), talk_t* request,
              talk_t** out) {
  if (!request || !out) return fail(EINVAL, -1);
  if (is_render(request)) {
    const OwnedUii identifier(UiiCreate(RenderString(request)));
    return identifier ? by_identifier(identifier.get(), out) : -1;
  }

  const char* object = VesselGetS(request, "adp");
  if (!object) return -1;
  const char* op = VesselGetS(request, "op");
  if (is_data_operator(op)) {
    const RequestTarget target = {nullptr, object, nullptr, VesselGetS(request, "ab")};
    return serve_data(road, target, op, VesselGetX(request, "v"), out);
  }
  NumberedParameters parameters(request);
  if (!parameters.complete()) return -1;
  *out = road.call(nullptr, object, op, parameters.list(), nullptr);
  return status_of(*out);
}

}  // namespace

extern "C" int32_t TalkHe(talk_t* request, talk_t** out) {
  return serve(plain_road(), He, request, out);
}

extern "C" int32_t SecureTalkHe(talk_t* request, talk_t** out) {
  return serve(isolated_road(), SecureHe, request, out);
}
