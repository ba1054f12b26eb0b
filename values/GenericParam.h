#pragma once
#include "host/edit/ParamBase.h"
#include "values/ValServer.h"

namespace GenericParam {

// An effect parameter served as an observable value: assigning the server
// asks the parameter, which decides (it may refuse, and makes an accepted
// change in the edit as one undo step). The server starts at the
// parameter's value and is brought back to it by refresh(), for instance
// after an undo.
template <class T>
class Param : public ValManagerBase<T> {
public:
  explicit Param(const ParamBase& param) : param_(param), server_(static_cast<T>(param.getValue())) {
    server_.setManager(this);
  }
  Param(const Param&) = delete;
  Param& operator=(const Param&) = delete;
  ~Param() override {
    if (server_.getManager() == this) server_.setManager(nullptr);
  }

  ValServer<T>& server() noexcept { return server_; }
  const ParamBase& param() const noexcept { return param_; }

  // The value in its generic form goes to the parameter, which decides.
  bool requestValChange(ValServer<T>*, T& value) override {
    return param_.requestValueChange(static_cast<double>(value));
  }
  void releaseServer(ValServer<T>* server) override {
    if (server == &server_) server_.setManager(nullptr);
  }

  // Takes the parameter's value again (quietly when it has not changed).
  void refresh() {
    const T now = static_cast<T>(param_.getValue());
    if (now == server_.getValue()) return;
    server_.setManager(nullptr);
    server_ = now;
    server_.setManager(this);
  }

private:
  ParamBase param_;
  ValServer<T> server_;
};

} // namespace GenericParam
