#include "node_ui/NodeUIRecBase.h"

#include "host/edit/Edit.h"
#include "node_ui/NodeUIManagerBase.h"

STRM_DEFINE_LAYER(NodeUIRecBase, "L")
STRM_REGISTER_LAYER(NodeUIRecBase);

const NotifyMsgType NodeUIRecBase::recUpdateMsgType_ = NotifyMsgTypeDictionary::instance().intern("nodeRecUpdate");

NodeUIRecBase::NodeUIRecBase() = default;

NodeUIRecBase::NodeUIRecBase(NodeUIManagerBase* manager, const IdStamp& node, const Cookie& edit)
    : manager_(manager), nodeId_(node), cookie_(edit) {}

NodeUIRecBase::~NodeUIRecBase() = default;

NodeUIRecBase& NodeUIRecBase::operator=(const NodeUIRecBase& other) {
  if (this != &other) {
    nodeId_ = other.nodeId_;
    cookie_ = other.cookie_;
    STRM_layerVersion(this) = STRM_layerVersion(&other);
  }
  return *this;
}

void NodeUIRecBase::registerWithNode() {
  if (!nodeId_.valid() || !manager_ || !manager_->getEdit()) return;
  Ux::Ptr<TagBase> tag = manager_->getEdit()->getTagBag().openObject(nodeId_);
  if (!tag) return;
  if (auto* node = dynamic_cast<FXGraphNodeBase*>(tag->instance().get())) FXGraphNodeClient::registerWith(node);
}

void NodeUIRecBase::sendUpdateNotification() {
  issueNotification(LightweightString<char>(std::string()), recUpdateMsgType_);
}

void NodeUIRecBase::pack(PStream& s) const {
  s.setCookedChar(IdStamp::currentEncoding);
  nodeId_.pack(s);
  // Written in the current form: the header is rewritten as 1.1 after this.
  STRM_layerVersion(this).minor = 1;
  // The records of an edit share its cookie: its text is made once, not per record.
  thread_local Cookie lastCookie = invalid_cookie;
  thread_local LightweightString<char> lastText = invalid_cookie.asString();
  if (!(cookie_ == lastCookie)) {
    lastCookie = cookie_;
    lastText = cookie_.asString();
  }
  s.writeBinary(lastText, 0, false, false);
}

void NodeUIRecBase::unpack(PStream& s) {
  const unsigned char encoding = s.getCookedChar();
  nodeId_.unpack(s, encoding);
  if (STRM_layerVersion(this).minor != 0) {
    // The records of an edit share its cookie: its text is read once, not per record.
    thread_local std::string lastText;
    thread_local Cookie lastCookie = invalid_cookie;
    const std::string_view text = s.getStringView();
    if (text != lastText) {
      Cookie cookie;
      // Text that is no cookie gives the invalid cookie, as for any unknown edit.
      lastCookie = Cookie::fromString(text, cookie) ? cookie : invalid_cookie;
      lastText.assign(text);
    }
    cookie_ = lastCookie;
  }
  STRM_layerVersion(this) = StreamLayerVersion{1, 1};
}
