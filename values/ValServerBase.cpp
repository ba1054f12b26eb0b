#include "values/ValServer.h"

const NotifyMsgType ValServerBase::preValChangedMsgType_ = NotifyMsgTypeDictionary::instance().intern("preValChanged");
const NotifyMsgType ValServerBase::valChangedMsgType_ = NotifyMsgTypeDictionary::instance().intern("valChanged");

ValServerBase::~ValServerBase() = default;
