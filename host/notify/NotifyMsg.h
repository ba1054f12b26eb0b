#pragma once
#include "host/core/LightweightString.h"
#include "host/core/Ptr.h"
#include "host/core/iObject.h"
#include "host/notify/NotifyMsgTypeDictionary.h"

// A notification: a text plus an optional object. The notifier stamps the
// type id it was issued with.
struct NotifyMsg {
  LightweightString<char> text;
  Ux::Ptr<iObject> object;
  NotifyMsgType type = anyNotifyMsgType;

  NotifyMsg() = default;
  explicit NotifyMsg(LightweightString<char> t, Ux::Ptr<iObject> o = nullptr)
      : text(std::move(t)), object(std::move(o)) {}
};
