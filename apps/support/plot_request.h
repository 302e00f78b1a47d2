// What quarl-plot is asked to draw, from its command line, and the tracks it
// makes of a data section for it: which curves, in which tracks, on which
// scales, as lines or as points, and no more than one picture can show.
#ifndef QUARL_APPS_PLOT_REQUEST_H
#define QUARL_APPS_PLOT_REQUEST_H

#include <quarl/quarl.h>

#include <string>
#include <vector>

#include "common/curve_families.h"
#include "support/svg_plot.h"

namespace quarl::apps {

// The scale of one curve as given: "GR=0:150", or "NPHI=0.45:-0.15" reversed.
struct CurveRange {
    std::string mnemonic;
    double from = 0.0;
    double to = 1.0;
};
// The curves of one track: "GR,SP,CALI", or "ILD,ILM:log" on log scales.
struct TrackRequest {
    std::vector<std::string> curves;
    bool log = false;
};

struct PlotRequest {
    std::vector<TrackRequest> tracks;      // none: a track per numeric curve
    std::vector<std::string> logCurves;    // --log
    std::vector<std::string> pointCurves;  // --points
    std::vector<CurveRange> ranges;        // --scale
    double trackWidth = 150.0;
};

// Adds the items of "GR=0:150,NPHI=0.45:-0.15" to `ranges`; false when an
// item is not MNEMONIC=FROM:TO with two different numbers.
bool ParseScaleList(const std::string& text, std::vector<CurveRange>* ranges);
// "GR,SP,CALI" or "ILD,ILM:log"; false when it names no curve or ends in
// another ":" word.
bool ParseTrackList(const std::string& text, TrackRequest* track);

// What one picture holds: tracks up to 12000 pixels wide in all, at most 40,
// of at most 6 curves each.
constexpr size_t kMaxTracks = 40;
constexpr double kMaxTracksWidth = 12000.0;
constexpr size_t kMaxCurvesPerTrack = 6;
size_t TrackLimit(double trackWidth);

// Neutron porosity and sonic curves are drawn from high to low values by
// custom, so that they read against density.
bool ReversedByCustom(const std::string& mnemonic);

struct TrackChoice {
    std::vector<PlotTrack> tracks;
    size_t depthAfter = 0;           // tracks left of the depth track
    std::string error;               // why nothing can be drawn
    std::vector<std::string> notes;  // what was left out or ignored
};
// The tracks of `data` for `request`; `depthIndex` is its depth curve. Core
// data (a section named Core...) are samples and drawn as points. Without
// --track the layout follows the curve families (common/curve_families.h):
// gamma ray, SP and caliper in the first track, then the depth track, the
// resistivities together on a log scale, neutron, density and sonic together
// on their customary scales (in the curve's unit: neutron in percent 45 to
// -15, sonic in us/m, density in kg/m3, caliper in mm), then a track for
// each other curve.
// Index columns (a second depth, time) are never drawn as curves. --scale
// and --log still set a curve's scale.
TrackChoice ChooseTracks(const CLasSection& data, int depthIndex, const PlotRequest& request);

}  // namespace quarl::apps

#endif
