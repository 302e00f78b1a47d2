#include "support/plot_request.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>

#include "common/text.h"
#include "support/command_line.h"

namespace quarl::apps {

bool ParseScaleList(const std::string& text, std::vector<CurveRange>* ranges)
{
    const std::vector<std::string> items = SplitList(text);
    for (const std::string& item : items) {
        const size_t equals = item.find('=');
        const size_t colon = item.find(':', equals == std::string::npos ? 0 : equals);
        if (equals == 0 || equals == std::string::npos || colon == std::string::npos) return false;
        CurveRange range;
        range.mnemonic = common::Trim(item.substr(0, equals));
        const std::string from = common::Trim(item.substr(equals + 1, colon - equals - 1));
        const std::string to = common::Trim(item.substr(colon + 1));
        if (!ParseNumberIn(from.c_str(), -DBL_MAX, DBL_MAX, &range.from) ||
            !ParseNumberIn(to.c_str(), -DBL_MAX, DBL_MAX, &range.to) || range.from == range.to)
            return false;
        ranges->push_back(range);
    }
    return !items.empty();
}

bool ParseTrackList(const std::string& text, TrackRequest* track)
{
    std::string names = text;
    const size_t colon = text.rfind(':');
    if (colon != std::string::npos) {
        if (!common::EqualsNoCase(common::Trim(text.substr(colon + 1)), "log")) return false;
        track->log = true;
        names.resize(colon);
    }
    track->curves = SplitList(names);
    return !track->curves.empty();
}

size_t TrackLimit(double trackWidth)
{
    const double fit = trackWidth > 0 ? kMaxTracksWidth / trackWidth : 0.0;
    return std::max<size_t>(1, std::min(kMaxTracks, static_cast<size_t>(fit)));
}

bool ReversedByCustom(const std::string& mnemonic)
{
    for (const char* name : {"NPHI", "TNPH", "NPOR", "DT", "DTC", "DTCO", "DTS", "DTSM"})
        if (common::EqualsNoCase(mnemonic, name)) return true;
    return false;
}

namespace {

PlotCurve CurveFor(const CLasCurve& c, bool trackLog, bool samples, const PlotRequest& request)
{
    PlotCurve curve;
    curve.mnemonic = c.m_definition.m_mnemonic;
    curve.unit = c.m_definition.m_unit;
    curve.description = c.m_definition.m_description;
    curve.values = c.m_numbers;
    curve.log = trackLog || ListContainsNoCase(request.logCurves, curve.mnemonic);
    curve.reversed = ReversedByCustom(curve.mnemonic);
    for (const CurveRange& range : request.ranges)
        if (common::EqualsNoCase(range.mnemonic, curve.mnemonic)) {
            curve.hasRange = true;
            curve.from = range.from;
            curve.to = range.to;
        }
    if (samples || ListContainsNoCase(request.pointCurves, curve.mnemonic))
        curve.style = CurveStyle::kPoints;
    return curve;
}

// A note for each name of an option that no drawn curve has.
void NoteUnused(const std::vector<std::string>& names, const char* option,
                const std::vector<PlotTrack>& tracks, std::vector<std::string>* notes)
{
    for (const std::string& name : names) {
        bool used = false;
        for (const PlotTrack& track : tracks)
            for (const PlotCurve& curve : track.curves)
                used = used || common::EqualsNoCase(curve.mnemonic, name);
        if (!used) notes->push_back(std::string(option) + " " + name + ": no such track, ignored");
    }
}

// The median of the finite values, or NaN.
double Median(std::vector<double> values)
{
    values.erase(
        std::remove_if(values.begin(), values.end(), [](double v) { return !std::isfinite(v); }),
        values.end());
    if (values.empty()) return std::nan("");
    std::nth_element(values.begin(),
                     values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

// The customary scale of a family member in the curve's own unit: neutron
// in percent, sonic per metre, density in kg/m3, caliper in mm or cm.
void FamilyScale(const common::CurveFamily& family, const CLasCurve& c, PlotCurve* curve)
{
    double scale = 1.0;
    const std::string unit = c.m_definition.m_unit;
    const double median = Median(c.m_numbers);
    const std::string name = family.name;
    if (name == "neutron" &&
        (common::EqualsNoCase(unit, "%") || common::EqualsNoCase(unit, "PU") || median > 1.5))
        scale = 100.0;
    if ((name == "sonic" || name == "shear_sonic") &&
        (common::EqualsNoCase(unit, "US/M") || common::EqualsNoCase(unit, "USEC/M")))
        scale = 1.0 / 0.3048;
    if (name == "density" && (common::EqualsNoCase(unit, "K/M3") ||
                              common::EqualsNoCase(unit, "KG/M3") || median > 100.0))
        scale = 1000.0;
    if (name == "caliper" && (common::EqualsNoCase(unit, "MM") || median > 60.0)) scale = 25.4;
    if (name == "caliper" && common::EqualsNoCase(unit, "CM")) scale = 2.54;
    curve->hasRange = true;
    curve->from = family.left * scale;
    curve->to = family.right * scale;
    curve->log = family.log;
    curve->reversed = false;
}

// Without --track: the tracks of the curve families, then one a curve for
// the rest, at most `limit` tracks of at most kMaxCurvesPerTrack curves.
void FamilyLayout(const CLasSection& data, int depthIndex, bool samples, const PlotRequest& request,
                  size_t limit, TrackChoice* choice)
{
    std::vector<PlotCurve> first, resistivity, porosity;
    std::vector<PlotTrack> others;
    size_t numeric = 0, indexColumns = 0;
    for (size_t i = 0; i < data.m_curves.size(); ++i) {
        const CLasCurve& c = data.m_curves[i];
        if (static_cast<int>(i) == depthIndex || !c.m_isNumeric) continue;
        if (common::IsIndexMnemonic(c.m_definition.m_mnemonic)) {
            ++indexColumns;
            continue;
        }
        ++numeric;
        PlotCurve curve = CurveFor(c, false, samples, request);
        const common::CurveFamily* family = common::FindCurveFamily(c.m_definition.m_mnemonic);
        if (!family) {
            others.push_back({{curve}});
            continue;
        }
        const PlotCurve asked = curve;  // --scale and --log win over the family's scale
        FamilyScale(*family, c, &curve);
        if (asked.hasRange) {
            curve.from = asked.from;
            curve.to = asked.to;
        }
        curve.log = curve.log || asked.log;
        std::vector<PlotCurve>* group =
            family->track == common::FamilyTrack::kFirst         ? &first
            : family->track == common::FamilyTrack::kResistivity ? &resistivity
            : family->track == common::FamilyTrack::kPorosity    ? &porosity
                                                                 : nullptr;
        if (group)
            group->push_back(curve);
        else
            others.push_back({{curve}});
    }
    const auto add = [&](std::vector<PlotCurve>& group) {
        for (size_t at = 0; at < group.size(); at += kMaxCurvesPerTrack) {
            PlotTrack track;
            const size_t end = std::min(group.size(), at + kMaxCurvesPerTrack);
            track.curves.assign(group.begin() + static_cast<std::ptrdiff_t>(at),
                                group.begin() + static_cast<std::ptrdiff_t>(end));
            choice->tracks.push_back(std::move(track));
        }
    };
    add(first);
    choice->depthAfter = choice->tracks.size();
    add(resistivity);
    add(porosity);
    for (PlotTrack& track : others) choice->tracks.push_back(std::move(track));
    if (choice->tracks.size() > limit) {
        choice->notes.push_back(std::to_string(choice->tracks.size()) + " tracks of " +
                                std::to_string(numeric) + " curves; the first " +
                                std::to_string(limit) +
                                " are drawn (choose others with --curves or --track)");
        choice->tracks.resize(limit);
        choice->depthAfter = std::min(choice->depthAfter, limit);
    }
    if (indexColumns > 0)
        choice->notes.push_back(std::to_string(indexColumns) +
                                " index column(s) besides the depth not drawn");
}

}  // namespace

TrackChoice ChooseTracks(const CLasSection& data, int depthIndex, const PlotRequest& request)
{
    TrackChoice choice;
    const bool samples =
        data.m_name.size() >= 4 && common::EqualsNoCase(data.m_name.substr(0, 4), "Core");
    const size_t limit = TrackLimit(request.trackWidth);
    if (request.tracks.empty()) {
        FamilyLayout(data, depthIndex, samples, request, limit, &choice);
    } else if (request.tracks.size() > limit) {
        choice.error = std::to_string(request.tracks.size()) + " tracks asked for; at most " +
                       std::to_string(limit) + " of " + common::FormatNumber(request.trackWidth) +
                       " pixels fit one picture";
        return choice;
    }
    for (const TrackRequest& asked : request.tracks) {
        if (asked.curves.size() > kMaxCurvesPerTrack) {
            choice.error = "a track holds at most " + std::to_string(kMaxCurvesPerTrack) +
                           " curves, not " + std::to_string(asked.curves.size());
            return choice;
        }
        PlotTrack track;
        for (const std::string& name : asked.curves) {
            const auto found =
                std::find_if(data.m_curves.begin(), data.m_curves.end(), [&](const CLasCurve& c) {
                    return common::EqualsNoCase(c.m_definition.m_mnemonic, name);
                });
            if (found == data.m_curves.end()) {
                choice.error = "section " + data.m_name + " has no curve " + name;
                return choice;
            }
            if (!found->m_isNumeric) {
                choice.error = "curve " + name + " holds text and cannot be drawn";
                return choice;
            }
            track.curves.push_back(CurveFor(*found, asked.log, samples, request));
        }
        choice.tracks.push_back(std::move(track));
    }
    for (const PlotTrack& track : choice.tracks)
        for (const PlotCurve& curve : track.curves)
            if (curve.log && curve.hasRange && !(curve.from > 0 && curve.to > 0)) {
                choice.error = "the log scale of " + curve.mnemonic + " needs two positive ends";
                return choice;
            }
    NoteUnused(request.logCurves, "--log", choice.tracks, &choice.notes);
    NoteUnused(request.pointCurves, "--points", choice.tracks, &choice.notes);
    std::vector<std::string> scaled;
    for (const CurveRange& range : request.ranges) scaled.push_back(range.mnemonic);
    NoteUnused(scaled, "--scale", choice.tracks, &choice.notes);
    return choice;
}

}  // namespace quarl::apps
