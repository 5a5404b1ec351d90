// Why members of a plug-in refused, as tqx.explain() tells: from the table that ships beside the plug-in.
//
// What a call gave is looked at after it: nil, False, or a constructor that failed leave a sentence behind.
// Calls that give nothing can only be explained before they are made, which costs more than the call; that
// is done while somebody listens.
#pragma once

#include <pybind11/pybind11.h>

#include "host/script/Machine.h"

namespace pytqx {

namespace py = pybind11;

// One call of a member under way. Inside the gate.
class Explaining {
  public:
    explicit Explaining(const script::MemberUse& use);
    ~Explaining();
    Explaining(const Explaining&) = delete;
    Explaining& operator=(const Explaining&) = delete;

    void Returned(const host::Value& result) const;

  private:
    script::MemberUse use_;
    bool listening_;
    mutable bool returned_ = false;
};

// The sentence of this thread's last refusal; empty for none.
std::string LastExplanation();

// Calls this with each sentence about any call from now on; None ends that. Gives the one before.
py::object Listen(py::object listener);

// The classes of a plug-in that was loaded are explained from now on.
void ForgetExplainer();

}  // namespace pytqx
