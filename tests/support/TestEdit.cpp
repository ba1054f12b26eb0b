#include "tests/support/TestEdit.h"

namespace testsupport {

EditBuilder::EditBuilder() : edit_(new Edit(Cookie::generate(Cookie::editKind), L"Built")) {}

Ux::Ptr<EffectInstance> EditBuilder::effect(const IdStamp& id, const char* tag, std::vector<IdStamp> inputs,
                                            const wchar_t* name) {
  Ux::Ptr<EffectInstance> e(new EffectInstance(id, name, tag));
  e->setNumInputs(static_cast<unsigned>(inputs.size()));
  for (unsigned i = 0; i < inputs.size(); ++i) {
    e->setInputTrackId(i, inputs[i], false);
    e->setInputName(i, toWide("in " + std::to_string(i)));
  }
  edit_->addNode(e);
  return e;
}

Ux::Ptr<MaterialUsageNode> EditBuilder::material(const IdStamp& id, const wchar_t* name) {
  Ux::Ptr<MaterialUsageNode> m(new MaterialUsageNode(id, name, MaterialUsageNode::Media::testCard, "bars"));
  m->setMaterialCookie(Cookie::generate());
  edit_->addNode(m);
  return m;
}

Ux::Ptr<ImageImportEffect> EditBuilder::image(const IdStamp& id, const char* file) {
  Ux::Ptr<ImageImportEffect> i(new ImageImportEffect(id, L"image", file));
  edit_->addNode(i);
  return i;
}

Ux::Ptr<AliasedInputEffect> EditBuilder::alias(const IdStamp& id, const IdStamp& input) {
  Ux::Ptr<AliasedInputEffect> a(new AliasedInputEffect(id, L"alias"));
  a->setInputTrackId(0, input, false);
  edit_->addNode(a);
  return a;
}

Ux::Ptr<ComplexBackgroundEffect> EditBuilder::matte(const IdStamp& id, ComplexBackgroundEffect::Mode mode) {
  Ux::Ptr<ComplexBackgroundEffect> m(new ComplexBackgroundEffect(id, L"matte", mode, Colour(0.1, 0.2, 0.9)));
  edit_->addNode(m);
  return m;
}

void EditBuilder::channel(const IdStamp& id, const wchar_t* name, const IdStamp& head) {
  EditChannel c;
  c.id = id;
  c.name = name;
  c.group = name;
  c.cels = {{0, 10, Cel::Kind::graph, head}};
  edit_->addChannel(c);
}

} // namespace testsupport
