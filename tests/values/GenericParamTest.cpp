// Effect parameters served as observable values: the parameter decides.
#include "values/GenericParam.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "host/edit/EffectInstance.h"
#include "host/notify/Log.h"
#include "tests/support/TestEdit.h"
#include "values/ValClient.h"

namespace {

const IdStamp mix(2, 0, 1), source(3, 0, 1);

struct ParamEdit : testsupport::ScopedEdit {
  ParamEdit() {
    material(source);
    effect(mix, "mix", {source})->setParam("gain", {1.2, 1.0, 0.85});
  }
  double gain(std::size_t i) const { return edit()->openObject<EffectInstance>(mix)->paramValues("gain")[i]; }
};

TEST(GenericParam, AnAcceptedValueIsOneUndoStepOfTheEditAndIsHeard) {
  ParamEdit e;
  Vob vob(e.edit());
  GenericParam::Param<double> green(GenericParam::ParamBase(&vob, mix, "gain", 1));
  EXPECT_EQ(green.server().getValue(), 1.0);
  std::vector<double> heard;
  ValObserver<double> client([&](ValServer<double>* s) { heard.push_back(s->getValue()); });
  client.registerWith(&green.server());

  green.server() = 0.5;
  EXPECT_EQ(e.gain(1), 0.5);
  EXPECT_EQ(e.gain(0), 1.2) << "the other numbers of the parameter stay";
  EXPECT_EQ(e.edit()->undoDepth(), 1u);
  EXPECT_EQ(heard, std::vector<double>{0.5});

  // Undone in the edit, the server follows when refreshed, without a change request.
  ASSERT_TRUE(vob.undo());
  EXPECT_EQ(e.gain(1), 1.0);
  green.refresh();
  EXPECT_EQ(green.server().getValue(), 1.0);
  EXPECT_EQ(e.edit()->canRedo(), true);
}

TEST(GenericParam, RefusedValuesLeaveTheServerAndTheEditAlone) {
  ParamEdit e;
  Vob vob(e.edit());
  GenericParam::Param<double> blue(GenericParam::ParamBase(&vob, mix, "gain", 2));
  GenericParam::Param<double> missing(GenericParam::ParamBase(&vob, mix, "gain", 3));
  int heard = 0;
  ValObserver<double> client([&](ValServer<double>*) { ++heard; });
  client.registerWith(&blue.server());

  blue.server() = std::nan("");
  EXPECT_FALSE(missing.server().updateAndNotify(0.3)) << "no fourth number";
  vob.setReadOnly(true);
  // With no screen the user is told through the log.
  LogChannel::Capture told(Log::channel());
  EXPECT_FALSE(blue.server().updateAndNotify(0.3));
  ASSERT_EQ(told.messages().size(), 1u) << "the user is told why";
  EXPECT_NE(told.messages()[0].find("read-only"), std::string::npos) << told.messages()[0];
  EXPECT_EQ(blue.server().getValue(), 0.85);
  EXPECT_EQ(e.gain(2), 0.85);
  EXPECT_EQ(heard, 0);
  EXPECT_EQ(e.edit()->undoDepth(), 0u);
}

} // namespace
