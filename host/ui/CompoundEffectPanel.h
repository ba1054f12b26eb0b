#pragma once
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/Vob.h"
#include "host/ui/TextRowsPanel.h"

class PushButton;
class Slider;
class TextField;

// The parameters panel of an effect: one row per parameter value (a
// matte's colours too, red, green and blue each), each with a slider, the
// value to type, and a - and a + button. A drag let go, a value typed and
// Return, or a click changes the value inside one undo step and tells the
// edit (modification kind 4), so that every view and still of the edit
// follows; a typed text that is no number is refused and said so. The panel follows its vob: it shows the values
// again after any change (an undo included) and goes when the vob goes.
class FXHOST_API CompoundEffectPanel : public TextRowsPanel, public VobClient {
public:
  // The change one click makes: the host's effects take values of about 0
  // to 1 (amounts, positions, scales, gains), where a twentieth shows.
  static constexpr double step = 0.05;

  // The parameters panel of the effect at a position of the vob's edit, on
  // the screen next to the mouse; an open one for the same effect and vob is
  // raised instead. The page "params" (or none) is the parameters, the only
  // page that this host's effects have. Null, with the reason in the host log,
  // for an invalid position, a position in another edit, a node that is not
  // an effect, another page, or no screen.
  static CompoundEffectPanel* create(Vob* vob, EditGraphIterator& at, LightweightString<char> page);

  ~CompoundEffectPanel() override;

  // What each row with buttons changes.
  struct Control {
    std::string key;
    std::size_t index = 0; // within the parameter's values
    PushButton* down = nullptr;
    PushButton* up = nullptr;
    Slider* slider = nullptr;
    TextField* field = nullptr;
  };
  const std::vector<Control>& controls() const noexcept { return controls_; }
  const IdStamp& getNodeId() const noexcept { return node_; }
  const LightweightString<char>& getPage() const noexcept { return page_; }

  // Changes a value by a number of steps (negative: down) as one undo step.
  // False when the effect or the value is gone, or the vob's edit is
  // read-only (which the user is told).
  bool stepParam(const std::string& key, std::size_t index, int steps);
  // Sets a value as one undo step; the same refusals.
  bool setParam(const std::string& key, std::size_t index, double value);

  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;
  LightweightString<char> vobClientId() const override { return "CompoundEffectPanel"; }
  LightweightString<char> idstring() const override { return "CompoundEffectPanel"; }

private:
  CompoundEffectPanel(Vob* vob, const IdStamp& node, LightweightString<char> page);
  Ux::Ptr<EffectInstance> effect() const;
  void refresh();
  void makeControls();

  IdStamp node_;
  LightweightString<char> page_;
  std::vector<Control> controls_;
};
