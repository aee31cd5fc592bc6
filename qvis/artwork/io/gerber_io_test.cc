// The Gerber reader's document, its errors and warnings, hostile inputs, and round trips
// through the writer.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "qvis/artwork/artwork_test_util.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/io/gerber_writer.h"
#include "qvis/artwork/render.h"
#include "qvis/artwork/shapes.h"

namespace qvis {
namespace {

ReadResult Read(const std::string& text, Layer* layer = nullptr) {
  Layer scratch;
  return ReadGerber(text, layer != nullptr ? layer : &scratch);
}

bool HasWarning(const ReadResult& r, const std::string& part) {
  for (const ReadMessage& w : r.warnings) {
    if (w.text.find(part) != std::string::npos) return true;
  }
  return false;
}

// A board using every construct the writer produces.
const char kFullBoard[] =
    "G04 test board*\n"
    "%FSLAX46Y46*%\n%MOMM*%\n"
    "%TF.FileFunction,Copper,L1,Top*%\n%TF.Part,Single*%\n"
    "%AMTHERM*0 a thermal with a centre dot*$3=$1x0.5*7,0,0,$1,$2,$3/2,45*1,1,$3/4,0,0*%\n"
    "%AMBOX*21,1,$1,$2,0,0,0*4,1,3,0,0,1,0,0,1,0,0,15*20,1,0.1,0,0,1,1,0*5,1,5,0,0,1,0*"
    "6,0,0,2,0.1,0.1,3,0.05,2.5,0*%\n"
    "%TA.AperFunction,ComponentPad*%\n%ADD10C,0.5*%\n%TD.AperFunction*%\n"
    "%ADD11R,1X0.5X0.2*%\n%ADD12O,1.5X0.6*%\n%ADD13P,1X6X15X0.3*%\n"
    "%ADD14THERM,2X1.5*%\n%ADD15BOX,1.2X0.8*%\n%ADD16C,0.1*%\n"
    "%ABD20*%\nD10*\nX0Y0D03*\n%LPC*%\nD16*\nX0Y0D03*\n%AB*%\n"
    "G75*\n"
    "%TO.N,GND*%\n%TO.C,R1*%\n"
    "D10*\nX1000000Y1000000D02*\nG01X5000000Y1000000D01*\nX5000000Y4000000D01*\n"
    "G03X3000000Y6000000I-2000000J0D01*\nG02X1000000Y4000000I0J-2000000D01*\n"
    "X1000000Y4000000I1000000J0D01*\n"
    "%TD*%\n"
    "D11*\n%LR30*%\n%LMXY*%\n%LS1.5*%\nX2000000Y2000000D03*\n%LMN*%\n%LR0*%\n%LS1*%\n"
    "D12*\nX3000000Y2000000D03*\nD13*\nX4000000Y2000000D03*\n"
    "D14*\nX2000000Y3000000D03*\nD15*\nX3000000Y3000000D03*\n"
    "%LPC*%\nD20*\nX4000000Y3000000D03*\n%LPD*%\n"
    "G36*\nX0Y0D02*\nG01X2000000Y0D01*\nG03X0Y2000000I-2000000J0D01*\nG01X0Y0D01*\n"
    "X3000000Y0D02*\nX4000000Y0D01*\nX4000000Y1000000D01*\nX3000000Y0D01*\nG37*\n"
    "%SRX2Y3I5J2.5*%\nD16*\nX7000000Y1000000D03*\nX7000000Y1000000D02*\nX8000000Y1500000D01*\n%SR*%\n"
    "M02*\n";

TEST(GerberReaderTest, ReadsEveryConstructIntoTheDocument) {
  Layer layer;
  const ReadResult r = Read(kFullBoard, &layer);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  EXPECT_TRUE(r.warnings.empty()) << r.warnings[0].ToString();
  EXPECT_EQ(layer.units, Units::kMillimetre);
  EXPECT_EQ(layer.file_function, "Copper,L1,Top");
  ASSERT_EQ(layer.file_attributes.size(), 2u);
  EXPECT_EQ(layer.apertures.size(), 8u);
  EXPECT_EQ(layer.apertures[10].attributes.size(), 1u);
  EXPECT_TRUE(layer.apertures[11].attributes.empty());
  EXPECT_EQ(layer.apertures[11].hole, 200000);
  EXPECT_EQ(layer.apertures[13].vertices, 6);
  EXPECT_EQ(layer.apertures[20].kind, ApertureKind::kBlock);
  EXPECT_EQ(layer.apertures[20].block.size(), 2u);
  EXPECT_EQ(layer.apertures[20].block[1].polarity, Polarity::kClear);
  ASSERT_EQ(layer.macros.size(), 2u);
  EXPECT_EQ(layer.macros["THERM"].statements.size(), 4u);
  const ObjectCounts c = CountObjects(layer);
  EXPECT_EQ(c.tracks, 3);  // two lines plus one inside the repeat
  EXPECT_EQ(c.arcs, 3);
  EXPECT_EQ(c.flashes, 7);
  EXPECT_EQ(c.regions, 2);
  EXPECT_EQ(c.repeats, 1);
  const ArtObject& first = layer.objects[0];
  EXPECT_EQ(first.kind, ObjectKind::kTrack);
  EXPECT_EQ(first.start, (ArtPoint{1000000, 1000000}));
  EXPECT_EQ(first.end, (ArtPoint{5000000, 1000000}));
  ASSERT_EQ(first.attributes.size(), 2u);
  EXPECT_EQ(first.attributes[0].name, ".C");
  const ArtObject& arc = layer.objects[2];
  EXPECT_EQ(arc.kind, ObjectKind::kArc);
  EXPECT_EQ(arc.centre, (ArtPoint{3000000, 4000000}));
  EXPECT_EQ(arc.direction, ArcDirection::kCounterClockwise);
  const ArtObject& full = layer.objects[4];
  EXPECT_EQ(full.start, full.end);  // full circle
  EXPECT_EQ(full.centre, (ArtPoint{2000000, 4000000}));
  const ArtObject& rotated = layer.objects[5];
  EXPECT_TRUE(rotated.attributes.empty());
  EXPECT_EQ(rotated.transform.rotation, 30.0);
  EXPECT_TRUE(rotated.transform.mirror_x && rotated.transform.mirror_y);
  EXPECT_EQ(rotated.transform.scale, 1.5);
  EXPECT_TRUE(layer.objects[6].transform.IsIdentity());
  const ArtObject& sr = layer.objects.back();
  EXPECT_EQ(sr.kind, ObjectKind::kStepRepeat);
  EXPECT_EQ(sr.repeat_x, 2);
  EXPECT_EQ(sr.repeat_y, 3);
  EXPECT_EQ(sr.step_x, 5000000);
  EXPECT_EQ(sr.step_y, 2500000);
  EXPECT_EQ(sr.children.size(), 2u);
}

TEST(GerberReaderTest, InchCoordinatesAndZeroForms) {
  Layer layer;
  // Leading zeros omitted, 2.4 inches: X15000 is 1.5 in.
  ASSERT_TRUE(Read("%FSLAX24Y24*%%MOIN*%%ADD10C,0.01*%D10*X15000Y-2500D03*M02*", &layer).ok);
  EXPECT_EQ(layer.objects[0].end, (ArtPoint{38100000, -6350000}));
  EXPECT_EQ(layer.apertures[10].size_x, 254000);
  // Trailing zeros omitted (deprecated): digits are padded on the right to 2 + 4, so X15 is
  // 15.0000 and Y025 is 02.5000.
  const ReadResult t = Read("%FSTAX24Y24*%%MOIN*%%ADD10C,0.01*%D10*X15Y025D03*M02*", &layer);
  ASSERT_TRUE(t.ok);
  EXPECT_TRUE(HasWarning(t, "trailing zero"));
  EXPECT_EQ(layer.objects[0].end, (ArtPoint{15 * kNmPerInch, kNmPerInch * 5 / 2}));
}

TEST(GerberReaderTest, DeprecatedFormsReadWithWarnings) {
  Layer layer;
  const ReadResult r = Read(
      "G04 old file*\n%FSAX24Y24*%\n%IPPOS*%\n%INBOARD*%\n%LNTOP*%\n%ASAXBY*%\n%MIA0B0*%\n"
      "%OFA0B0*%\n%SFA1B1*%\nG70*\n%ADD10C,0.01*%\nG54D10*\nG90*\n"
      "X10000Y10000D02*\nX20000Y10000D01*\nX30000*\nG91*\nX10000Y0D01*\nG90*\n"
      "G01X1.5Y0.5D03*\n",
      &layer);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  for (const char* w : {"G54", "G70", "G90", "G91", "IP", "IN", "LN", "AS", "MI", "OF", "SF",
                        "without L or T", "previous operation", "decimal point", "M02"}) {
    EXPECT_TRUE(HasWarning(r, w)) << w;
  }
  EXPECT_EQ(layer.name, "BOARD");
  ASSERT_EQ(layer.objects.size(), 4u);
  EXPECT_EQ(layer.objects[1].end, (ArtPoint{3 * kNmPerInch, kNmPerInch}));  // modal D01
  EXPECT_EQ(layer.objects[2].end, (ArtPoint{4 * kNmPerInch, kNmPerInch}));  // incremental
  EXPECT_EQ(layer.objects[3].end, (ArtPoint{kNmPerInch * 3 / 2, kNmPerInch / 2}));
  // Warnings say where: line and column of the first use.
  for (const ReadMessage& w : r.warnings) {
    if (w.text.find("G54") != std::string::npos) {
      EXPECT_EQ(w.line, 12);
      EXPECT_EQ(w.column, 1);
    }
  }
}

// The base drawing of the image command tests: a 0.2 x 0.1 in rectangle flashed at (0.5, 0.3),
// a counter-clockwise quarter arc from (1, 0) to (0, 1) about the origin, and a step and
// repeat of two flashes 0.4 in apart along x.
std::string ImageFile(const std::string& commands) {
  return "%FSLAX26Y26*%\n%MOIN*%\n" + commands +
         "%ADD10R,0.2X0.1*%\n%ADD11C,0.02*%\nG75*\n"
         "D10*\nX500000Y300000D03*\n"
         "D11*\nX1000000Y0D02*\nG03X0Y1000000I-1000000J0D01*\n"
         "%SRX2Y1I0.4J0*%\nD10*\nX0Y0D03*\n%SR*%\nM02*\n";
}

constexpr Coord kIn = kNmPerInch;

TEST(GerberReaderTest, ImageCommandsPlaceEveryObjectInOrder) {
  struct Case {
    const char* commands;
    ArtPoint flash;        // where the rectangle lands
    ApertureTransform t;   // how it is turned
    ArtPoint arc_start, arc_end;
    ArcDirection dir;
    int repeat_x, repeat_y;
    Coord step_x, step_y;
  };
  const ArcDirection ccw = ArcDirection::kCounterClockwise, cw = ArcDirection::kClockwise;
  const Case cases[] = {
      {"", {kIn / 2, kIn * 3 / 10}, {}, {kIn, 0}, {0, kIn}, ccw, 2, 1, kIn * 4 / 10, 0},
      // Mirror A: x -> -x, the rectangle mirrored, the arc turns the other way.
      {"%MIA1B0*%\n", {-kIn / 2, kIn * 3 / 10}, {true, false, 0, 1}, {-kIn, 0}, {0, kIn}, cw,
       2, 1, -kIn * 4 / 10, 0},
      // Offset: added to every point, not to the steps.
      {"%OFA0.1B-0.2*%\n", {kIn * 6 / 10, kIn / 10}, {}, {kIn * 11 / 10, -kIn / 5},
       {kIn / 10, kIn * 8 / 10}, ccw, 2, 1, kIn * 4 / 10, 0},
      // Scale: points, steps and the aperture.
      {"%SFA2B2*%\n", {kIn, kIn * 6 / 10}, {false, false, 0, 2}, {2 * kIn, 0}, {0, 2 * kIn},
       ccw, 2, 1, kIn * 8 / 10, 0},
      // Rotation a quarter turn counter-clockwise about the origin: the steps run along y.
      {"%IR90*%\n", {-kIn * 3 / 10, kIn / 2}, {false, false, 90, 1}, {0, kIn}, {-kIn, 0}, ccw,
       1, 2, 0, kIn * 4 / 10},
      // Axis swap: x and y exchanged, a reflection.
      {"%ASAYBX*%\n", {kIn * 3 / 10, kIn / 2}, {true, false, 270, 1}, {0, kIn}, {kIn, 0}, cw,
       1, 2, 0, kIn * 4 / 10},
      // Offset before rotation: (0.5 + 0.1, 0.3 + 0.2) turned a quarter.
      {"%OFA0.1B0.2*%\n%IR90*%\n", {-kIn / 2, kIn * 6 / 10}, {false, false, 90, 1},
       {-kIn / 5, kIn * 11 / 10}, {-kIn * 12 / 10, kIn / 10}, ccw, 1, 2, 0, kIn * 4 / 10},
      // Mirror before offset, offset before scale.
      {"%MIA0B1*%\n%OFA0.1B0*%\n%SFA2B2*%\n", {kIn * 12 / 10, -kIn * 6 / 10},
       {false, true, 0, 2}, {kIn * 22 / 10, 0}, {kIn / 5, -2 * kIn}, cw, 2, 1, kIn * 8 / 10, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.commands);
    Layer layer;
    const ReadResult r = Read(ImageFile(c.commands), &layer);
    ASSERT_TRUE(r.ok) << r.error.ToString();
    ASSERT_EQ(layer.objects.size(), 3u);
    const ArtObject& flash = layer.objects[0];
    EXPECT_EQ(flash.end, c.flash);
    // Compare the transform by what it does to a point: mirror_y equals mirror_x turned 180.
    const Affine want = Affine::FromTransform(c.t), got = Affine::FromTransform(flash.transform);
    EXPECT_NEAR(got.a, want.a, 1e-9);
    EXPECT_NEAR(got.b, want.b, 1e-9);
    EXPECT_NEAR(got.c, want.c, 1e-9);
    EXPECT_NEAR(got.d, want.d, 1e-9);
    const ArtObject& arc = layer.objects[1];
    ASSERT_EQ(arc.kind, ObjectKind::kArc);
    EXPECT_EQ(arc.start, c.arc_start);
    EXPECT_EQ(arc.end, c.arc_end);
    EXPECT_EQ(arc.direction, c.dir);
    // The centre is where the origin went, so the arc keeps its radius.
    const Coord r0 = (arc.start.x - arc.centre.x) * (arc.start.x - arc.centre.x) +
                     (arc.start.y - arc.centre.y) * (arc.start.y - arc.centre.y);
    const Coord r1 = (arc.end.x - arc.centre.x) * (arc.end.x - arc.centre.x) +
                     (arc.end.y - arc.centre.y) * (arc.end.y - arc.centre.y);
    EXPECT_EQ(r0, r1);
    const ArtObject& sr = layer.objects[2];
    ASSERT_EQ(sr.kind, ObjectKind::kStepRepeat);
    EXPECT_EQ(sr.repeat_x, c.repeat_x);
    EXPECT_EQ(sr.repeat_y, c.repeat_y);
    EXPECT_EQ(sr.step_x, c.step_x);
    EXPECT_EQ(sr.step_y, c.step_y);
    // The written file reads back to the same placed objects, with no image commands left.
    Layer again;
    const std::string written = WriteGerber(layer, {});
    ASSERT_TRUE(Read(written, &again).ok);
    EXPECT_EQ(again.objects, layer.objects);
  }
}

TEST(GerberReaderTest, ImageCommandsDrawTheTurnedImage) {
  // IR90 turns the 0.2 x 0.1 rectangle at (0.5, 0.3) to a 0.1 x 0.2 one at (-0.3, 0.5); SF
  // then doubles it about the origin first.
  const ArtView v = testing_util::View(100, 100, 100, -0.5, 0);
  const testing_util::Mask m = testing_util::Draw(
      "%FSLAX26Y26*%\n%MOIN*%\n%IR90*%\n%ADD10R,0.2X0.1*%\nD10*\nX500000Y300000D03*\nM02*\n", v);
  // Rectangle x in [-0.35, -0.25], y in [0.4, 0.6]: pixels u = 15..25, v from the top 40..60.
  EXPECT_GT(testing_util::ExpectShape(
                m, [](double x, double y) { return testing_util::BoxSd(x, y, 15, 40, 25, 60); }),
            9000);
  // Non-uniform scale: the points stretch along x only; the aperture by the mean, with a
  // warning.
  Layer layer;
  const ReadResult r = Read(
      "%FSLAX26Y26*%\n%MOIN*%\n%SFA4B1*%\n%ADD10C,0.1*%\nD10*\nX100000Y200000D03*\nM02*\n",
      &layer);
  ASSERT_TRUE(r.ok);
  EXPECT_TRUE(HasWarning(r, "geometric mean"));
  EXPECT_EQ(layer.objects[0].end, (ArtPoint{kIn * 4 / 10, kIn / 5}));
  EXPECT_DOUBLE_EQ(layer.objects[0].transform.scale, 2.0);
  // With the axes swapped as well the aperture is still a similarity: no stretch, no shear.
  ASSERT_TRUE(Read("%FSLAX26Y26*%\n%MOIN*%\n%ASAYBX*%\n%SFA4B1*%\n%IR90*%\n%ADD10R,0.1X0.2*%\n"
                   "D10*\nX100000Y200000D03*\nM02*\n",
                   &layer)
                  .ok);
  EXPECT_EQ(layer.objects[0].end, (ArtPoint{-kIn / 10, kIn * 8 / 10}));
  const Affine t = Affine::FromTransform(layer.objects[0].transform);
  EXPECT_NEAR(t.Scale(), 2.0, 1e-9);
  EXPECT_NEAR(t.a * t.c + t.b * t.d, 0.0, 1e-9);  // columns orthogonal
  EXPECT_NEAR(std::hypot(t.a, t.b), 2.0, 1e-9);
  // Bad values are errors naming what was expected.
  EXPECT_NE(Read("%FSLAX26Y26*%\n%MOIN*%\n%IR45*%\nM02*\n").error.text.find("0, 90, 180"),
            std::string::npos);
  EXPECT_NE(Read("%FSLAX26Y26*%\n%MOIN*%\n%MIA2B0*%\nM02*\n").error.text.find("0 or 1"),
            std::string::npos);
  EXPECT_NE(Read("%FSLAX26Y26*%\n%MOIN*%\n%ASAZBY*%\nM02*\n").error.text.find("AYBX"),
            std::string::npos);
  EXPECT_NE(Read("%FSLAX26Y26*%\n%MOIN*%\n%SFA0B1*%\nM02*\n").error.text.find("above 0"),
            std::string::npos);
  const ReadResult huge = Read("%FSLAX26Y26*%\n%MOIN*%\n%SFA1000000B1*%\n%ADD10C,0.1*%\nD10*\n"
                               "X99999999999999Y0D03*\nM02*\n");
  EXPECT_FALSE(huge.ok);
  EXPECT_EQ(huge.error.line, 6);
}

TEST(GerberReaderTest, NegativeImageIsDarkWhereNothingIsDrawn) {
  const ArtView v = testing_util::View(100, 40, 40);
  Layer layer;
  const ReadResult r = Read(
      "%FSLAX26Y26*%\n%MOIN*%\n%IPNEG*%\n%ADD10R,0.1X0.1*%\nD10*\nX200000Y200000D03*\n"
      "%LPC*%\nX200000Y200000D03*\n%LPD*%\nX100000Y100000D03*\nM02*\n",
      &layer);
  ASSERT_TRUE(r.ok);
  EXPECT_TRUE(layer.negative);
  EXPECT_TRUE(HasWarning(r, "IPNEG"));
  const testing_util::Mask m{40, 40, RenderLayerMask(layer, v)};
  // Dark everywhere except the dark flash at (0.1, 0.1): x 5..15, y 25..35 from the top. The
  // clear flash at (0.2, 0.2) brings back the dark its dark twin removed.
  EXPECT_EQ(testing_util::ExpectShape(m,
                                      [](double x, double y) {
                                        return -testing_util::BoxSd(x, y, 5, 25, 15, 35);
                                      }),
            1600);
  // The writer keeps the negative image.
  Layer again;
  ASSERT_TRUE(Read(WriteGerber(layer, {}), &again).ok);
  EXPECT_TRUE(again.negative);
  EXPECT_EQ(again.objects, layer.objects);
}

TEST(GerberReaderTest, ErrorsNameLineColumnAndWhatWasExpected) {
  struct Case {
    std::string text;
    int line;
    int column;
    std::string expected;
  };
  const std::vector<Case> cases = {
      {"%FSLAX46Y46*%\n%MOMM*%\nD10*\n", 3, 1, "aperture defined"},
      {"%FSLAX46Y46*%\n%MOXX*%\n", 2, 4, "MM or IN"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%ADD10C,0.1*%\nX1Y1D01*\n", 4, 1, "aperture selected"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%ADD10C,abc*%\n", 3, 9, "decimal parameter"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%ADD10Q,1*%\n", 3, 7, "macro defined"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%AMX*1,1,(2*%\n", 3, 12, "')'"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%AMX*9,1*%\n", 3, 6, "primitive code"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%ADD10C,1*%\nD10*\nG36*\nX0Y0D03*\n", 6, 1, "D03 is not"},
      {"%FSLAX46Y46*%\n%MOMM*%\nG36*\nM02*\n", 5, 1, "G37"},
      {"%FSLAX46Y46*%\n%MOMM*%\nX1Y1D07*\n", 3, 1, "D01, D02, D03"},
      {"%FSLAX46Y46*%\n%MOMM*%\nQ1*\n", 3, 1, "G, D, M code"},
      {"%FSLAX46Y46*%\n%MOMM*%\nX12", 3, 4, "'*'"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%ABD10*%\nM02*\n", 5, 1, "%AB*%"},
      {"%FSLAX4Y46*%\n", 1, 7, "two digits"},
      {"%FSLAX46Y46*%\n%MOMM*%\nX123456789012345678901D02*\n", 3, 1, "at most 18 digits"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%SRX1000Y10000I1J1*%\n", 3, 4, "repeated copies"},
      // Coordinates beyond 10^9 mm could not be written back with six decimals, and sums of
      // them could overflow: refused however they are reached.
      {"%FSLAX41Y46*%\n%MOMM*%\nX10000001000000D02*\n", 3, 1, "within 10^9 mm"},
      {"%FSLAX46Y46*%\n%MOMM*%\nG91*\nX900000000000000D02*\nX900000000000000D02*\n", 5, 1,
       "within 10^9 mm"},
      {"%FSLAX46Y46*%\n%MOMM*%\n%SRX1000Y1I10000000J1*%\n", 3, 4, "spanning"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const ReadResult r = Read(c.text);
    ASSERT_FALSE(r.ok);
    EXPECT_EQ(r.error.line, c.line) << r.error.ToString();
    EXPECT_EQ(r.error.column, c.column) << r.error.ToString();
    EXPECT_NE(r.error.text.find(c.expected), std::string::npos) << r.error.ToString();
  }
}

TEST(GerberReaderTest, TheLargestCoordinatesWriteAndReadAgain) {
  const std::string text =
      "%FSLAX46Y46*%\n%MOMM*%\n%ADD10C,1*%\nD10*\n"
      "X-1000000000000000Y1000000000000000D02*\n"
      "G75*G03X1000000000000000Y-1000000000000000I1000000000000000J-1000000000000000D01*\n"
      "M02*\n";
  Layer layer;
  ASSERT_TRUE(Read(text, &layer).ok);
  ASSERT_EQ(layer.objects.size(), 1u);
  EXPECT_EQ(layer.objects[0].start.x, -kMaxCoord);
  Layer again;
  const ReadResult r = Read(WriteGerber(layer, {}), &again);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  EXPECT_EQ(again.objects, layer.objects);
}

TEST(GerberReaderTest, HostileInputsAreRefusedBeforeTheyCost) {
  // Blocks nested beyond the limit.
  std::string deep = "%FSLAX46Y46*%%MOMM*%";
  for (int i = 0; i < 40; ++i) deep += "%ABD" + std::to_string(10 + i) + "*%";
  EXPECT_FALSE(Read(deep).ok);
  // Blocks that multiply: each flashes the previous one 1000 times.
  std::string bomb = "%FSLAX46Y46*%%MOMM*%%ADD10C,1*%%ABD11*%D10*";
  for (int i = 0; i < 1000; ++i) bomb += "X" + std::to_string(i) + "Y0D03*";
  bomb += "%AB*%";
  for (int level = 12; level < 16; ++level) {
    bomb += "%ABD" + std::to_string(level) + "*%D" + std::to_string(level - 1) + "*";
    for (int i = 0; i < 1000; ++i) bomb += "X" + std::to_string(i) + "Y0D03*";
    bomb += "%AB*%";
  }
  const ReadResult b = Read(bomb);
  EXPECT_FALSE(b.ok);
  EXPECT_NE(b.error.text.find("expanded"), std::string::npos);
  // Repeats of a block that repeats.
  EXPECT_FALSE(Read("%FSLAX46Y46*%%MOMM*%%ADD10C,1*%%ABD11*%%SRX1000Y1000I1J1*%D10*X0Y0D03*"
                    "%SR*%%AB*%%SRX1000Y1000I1J1*%D11*X0Y0D03*%SR*%")
                   .ok);
  // A small object limit is honoured.
  ReadLimits small;
  small.max_objects = 10;
  std::string many = "%FSLAX46Y46*%%MOMM*%%ADD10C,1*%D10*";
  for (int i = 0; i < 20; ++i) many += "X" + std::to_string(i) + "Y0D03*";
  Layer layer;
  EXPECT_FALSE(ReadGerber(many, &layer, small).ok);
  // Deeply nested expressions and far-off coordinates.
  EXPECT_FALSE(Read("%FSLAX46Y46*%%MOMM*%%AMX*1,1," + std::string(200, '(') + "1" +
                    std::string(200, ')') + ",0,0*%")
                   .ok);
  EXPECT_FALSE(Read("%FSLAX46Y46*%%MOMM*%%ADD10C,1e300*%").ok);
  EXPECT_TRUE(Read("%FSLAX66Y66*%%MOMM*%%ADD10C,1*%D10*X999999999999Y-999999999999D03*M02*").ok);
  // Zero-radius and inconsistent arcs draw something finite.
  Layer arcs;
  ASSERT_TRUE(Read("%FSLAX46Y46*%%MOMM*%%ADD10C,0.1*%G75*D10*X0Y0D02*G03X1000000Y0I0J0D01*"
                   "G02X0Y1000000I5J-3D01*M02*",
                   &arcs)
                  .ok);
  EXPECT_EQ(RenderLayerMask(arcs, testing_util::View(100, 50, 50, -0.1, -0.1)).size(), 2500u);
}

TEST(GerberReaderTest, MacroVariablesAndDeprecatedPrimitives) {
  Layer layer;
  const ReadResult r =
      Read("%FSLAX46Y46*%%MOMM*%%AMOLD*2,1,0.5,0,0,1,0*22,1,2,1,0,0*%%ADD10OLD*%M02*", &layer);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  EXPECT_TRUE(HasWarning(r, "primitive 2 "));
  EXPECT_TRUE(HasWarning(r, "primitive 22"));
  EXPECT_TRUE(HasWarning(r, "without rotation"));
  const std::vector<EvaluatedPrimitive> p = EvaluateMacro(layer.macros["OLD"], {});
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].code, kMacroVectorLine);
  EXPECT_EQ(p[1].code, kMacroCenterLine);
  EXPECT_EQ(p[1].values, (std::vector<double>{1, 2, 1, 1, 0.5, 0}));  // lower-left -> centre
  MacroExpr e;
  std::string err;
  std::size_t pos = 0;
  ASSERT_TRUE(ParseMacroExpr("-$1x(2+$2)/4-3", &e, &err, &pos));
  EXPECT_DOUBLE_EQ(e.Evaluate({0, 2, 6}), -7.0);
  EXPECT_EQ(e.ToString(), "-$1x(2+$2)/4-3");
  MacroExpr back;
  ASSERT_TRUE(ParseMacroExpr(e.ToString(), &back, &err, &pos));
  EXPECT_EQ(back, e);
  ASSERT_TRUE(ParseMacroExpr("1-(2-3)", &e, &err, &pos));
  EXPECT_EQ(e.ToString(), "1-(2-3)");
  EXPECT_DOUBLE_EQ(e.Evaluate({}), 2.0);
}

TEST(GerberWriterTest, RoundTripGivesAnEqualDocument) {
  Layer first;
  ASSERT_TRUE(Read(kFullBoard, &first).ok);
  const std::string written = WriteGerber(first);
  EXPECT_NE(written.find("%FSLAX46Y46*%"), std::string::npos);
  EXPECT_NE(written.find("%MOMM*%"), std::string::npos);
  Layer second;
  const ReadResult r = Read(written, &second);
  ASSERT_TRUE(r.ok) << r.error.ToString() << "\n" << written;
  EXPECT_TRUE(r.warnings.empty()) << r.warnings[0].ToString();
  EXPECT_TRUE(first == second) << written;
  EXPECT_EQ(WriteGerber(second), written);
}

TEST(GerberWriterTest, InchFilesRenderTheSameWrittenInMillimetres) {
  const std::string inch =
      "%FSLAX26Y26*%%MOIN*%%AMD*1,1,$1,0.05,0*21,0,0.02,$1,0,0,0*%%ADD10D,0.08*%"
      "%ADD11C,0.02*%G75*D10*X300000Y300000D03*D11*X100000Y100000D02*"
      "G02X500000Y100000I200000J0D01*M02*";
  Layer a;
  ASSERT_TRUE(Read(inch, &a).ok);
  Layer b;
  const std::string mm = WriteGerber(a);
  ASSERT_TRUE(Read(mm, &b).ok) << mm;
  EXPECT_EQ(b.units, Units::kMillimetre);
  const ArtView v = testing_util::View(200, 120, 80);
  EXPECT_EQ(RenderLayerMask(a, v), RenderLayerMask(b, v));
  // And back to inches as asked.
  Layer c;
  ASSERT_TRUE(Read(WriteGerber(a, {Units::kInch}), &c).ok);
  EXPECT_EQ(c.units, Units::kInch);
  EXPECT_EQ(c.objects, a.objects);
}

// Numbers too large or too small for "%g" without an exponent are written in full, since a
// Gerber number has no exponent form; found by the Gerber fuzz target.
TEST(GerberWriterTest, ExtremeNumbersAreWrittenWithoutExponents) {
  EXPECT_EQ(FormatDecimal(1.5e20, 15), "150000000000000000000");
  EXPECT_EQ(FormatDecimal(-2.5e-20, 15), "0");
  EXPECT_EQ(FormatDecimal(0.125, 15), "0.125");
  Layer layer;
  const ReadResult r = ReadGerber(
      "%FSLAX46Y46*%%MOMM*%%AMBIG*1,1,133333333333333333333333,0,0*%%ADD10BIG*%D10*X0Y0D03*M02*",
      &layer);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  const std::string written = WriteGerber(layer);
  EXPECT_EQ(written.find("e+"), std::string::npos) << written;
  Layer again;
  const ReadResult r2 = ReadGerber(written, &again);
  EXPECT_TRUE(r2.ok) << r2.error.ToString() << "\n" << written;
}

}  // namespace
}  // namespace qvis
