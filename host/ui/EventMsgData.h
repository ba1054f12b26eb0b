#pragma once

// The data that goes with a data message (Glob::sendDataMessage): the
// receiver, knowing the message, casts the data pointer back to the
// EventMsgData of the type that message carries. The data lives only for
// the call.
template <class T>
struct EventMsgData {
  T data;
  const T& get() const noexcept { return data; }
};
