// quarl-plot IN OUT.svg: draws the log plot of a LAS file as a standalone
// SVG document, depth down the page and tracks of curves side by side.
#include <quarl/quarl.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "common/log_facts.h"
#include "common/text.h"
#include "support/command_line.h"
#include "support/file_identity.h"
#include "support/plot_request.h"
#include "support/program.h"
#include "support/read_notes.h"
#include "support/svg_plot.h"

namespace ex = quarl::apps;
namespace common = quarl::common;

namespace {

void Usage(std::FILE* to)
{
    std::fprintf(
        to,
        "usage: quarl-plot IN OUT.svg [options]\n"
        "  --curves GR,RHOB,...  a track for each of these curves, in this order\n"
        "  --track GR,SP,CALI    one track of these curves over each other, each on its own\n"
        "                        scale; ILD,ILM:log puts them on logarithmic scales\n"
        "                        (--curves and --track add up, in their order; default: a\n"
        "                        track for each numeric curve, the first 40 of them)\n"
        "  --log RES,ILD,...     draw these curves on a logarithmic scale\n"
        "  --scale GR=0:150,...  the values at the left and right edge of a curve's scale;\n"
        "                        NPHI=0.45:-0.15 runs from high to low (default: the range of\n"
        "                        the values without spikes, NPHI and DT from high to low)\n"
        "  --points PERM,...     draw these curves as points, as for core samples (default:\n"
        "                        points for a Core section and for sparse readings, else lines)\n"
        "  --section NAME        the data section to draw (default: the log data)\n"
        "  --height PX           height of the depth range in pixels (default: from the rows)\n"
        "  --track-width PX      width of one track in pixels (default: 150)\n"
        "  --strict              read IN exactly by the format's rules; by default it is read\n"
        "                        leniently and the notes of the read go to stderr\n"
        "  -h, --help            print this help and exit\n"
        "  --version             print the version and exit\n");
}

int Run(int argc, char** argv)
{
    std::vector<std::string> positional;
    ex::PlotRequest request;
    std::string sectionName;
    double height = 0.0;
    bool strict = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](const char* option) -> const char* {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "quarl-plot: %s needs a value\n", option);
                std::exit(2);
            }
            return argv[++i];
        };
        if (arg == "-h" || arg == "--help") {
            Usage(stdout);
            return 0;
        } else if (arg == "--version") {
            ex::PrintVersion("quarl-plot");
            return 0;
        } else if (arg == "--strict") {
            strict = true;
        } else if (arg == "--curves") {
            for (const std::string& name : ex::SplitList(value("--curves")))
                request.tracks.push_back({{name}, false});
        } else if (arg == "--track") {
            ex::TrackRequest track;
            const char* text = value("--track");
            if (!ex::ParseTrackList(text, &track)) {
                std::fprintf(stderr,
                             "quarl-plot: --track wants CURVE,CURVE,... or ...:log, not '%s'\n",
                             text);
                return 2;
            }
            request.tracks.push_back(track);
        } else if (arg == "--scale") {
            const char* text = value("--scale");
            if (!ex::ParseScaleList(text, &request.ranges)) {
                std::fprintf(stderr,
                             "quarl-plot: --scale wants CURVE=LEFT:RIGHT with two different "
                             "numbers, not '%s'\n",
                             text);
                return 2;
            }
        } else if (arg == "--log") {
            for (const std::string& name : ex::SplitList(value("--log")))
                request.logCurves.push_back(name);
        } else if (arg == "--points") {
            for (const std::string& name : ex::SplitList(value("--points")))
                request.pointCurves.push_back(name);
        } else if (arg == "--section") {
            sectionName = value("--section");
        } else if (arg == "--height") {
            if (!ex::ParseNumberIn(value("--height"), 100, 20000, &height)) {
                std::fprintf(stderr,
                             "quarl-plot: --height wants a number of pixels from 100 to 20000\n");
                return 2;
            }
        } else if (arg == "--track-width") {
            if (!ex::ParseNumberIn(value("--track-width"), 60, 1000, &request.trackWidth)) {
                std::fprintf(
                    stderr, "quarl-plot: --track-width wants a number of pixels from 60 to 1000\n");
                return 2;
            }
        } else if (!ex::TakeOperand("quarl-plot", arg, positional)) {
            Usage(stderr);
            return 2;
        }
    }
    if (positional.size() != 2) {
        Usage(stderr);
        return 2;
    }
    const std::string& in = positional[0];
    const std::string& out = positional[1];
    if (ex::SameFile(in, out)) {
        std::fprintf(stderr, "quarl-plot: %s is the input file %s; choose another OUT.svg\n",
                     out.c_str(), in.c_str());
        return 2;
    }

    quarl::CLasReader reader;
    reader.SetOptions(ex::ProgramReadOptions(strict, in));
    const quarl::ELASFILEERROR code = reader.Open(tessel::TxString(in));
    ex::PrintNotesSummary("quarl-plot", in, reader.GetNotes());
    if (code != quarl::LASFILE_OK) {
        std::fprintf(
            stderr, "quarl-plot: %s: %s (%s)%s\n", in.c_str(), quarl::ResultName(code),
            quarl::ResultDescription(code),
            reader.empty() ? (code == quarl::LASFILE_BAD_FORMAT ? "; not a LAS file" : "") : "");
        return 1;
    }

    // The data section: the one named, else the log data, else the first.
    std::shared_ptr<quarl::CLasSection> data;
    for (const auto& section : reader) {
        if (section->m_type != quarl::LASSECTION_DATA) continue;
        if (!sectionName.empty()) {
            if (common::EqualsNoCase(section->m_name, sectionName)) {
                data = section;
                break;
            }
            continue;
        }
        if (!data || ((section->m_flags & quarl::CLasSection::kFlagLogData) &&
                      !(data->m_flags & quarl::CLasSection::kFlagLogData)))
            data = section;
    }
    if (!data) {
        if (sectionName.empty())
            std::fprintf(stderr, "quarl-plot: %s has no data section\n", in.c_str());
        else
            std::fprintf(stderr, "quarl-plot: %s has no data section named %s\n", in.c_str(),
                         sectionName.c_str());
        return 1;
    }
    const int depthIndex = common::DepthCurveIndex(*data);
    if (depthIndex < 0) {
        std::fprintf(stderr, "quarl-plot: %s: section %s has no numeric depth curve\n", in.c_str(),
                     data->m_name.c_str());
        return 1;
    }

    const quarl::CLasSection* well = reader.size() > 1 ? &reader.GetWellHeaders() : nullptr;
    ex::PlotInput plot;
    plot.hasNull = common::NullValueOf(well, &plot.nullValue);
    const quarl::CLasCurve& depth = data->m_curves[static_cast<size_t>(depthIndex)];
    plot.depths = depth.m_numbers;
    plot.depthMnemonic = depth.m_definition.m_mnemonic;
    plot.depthUnit = depth.m_definition.m_unit;
    plot.dataHeight = height;
    plot.trackWidth = request.trackWidth;

    auto wellValue = [&](const char* mnemonic) {
        quarl::CLasParam param;
        if (well && well->FindParameterByMnemonic(mnemonic, &param) >= 0)
            return common::Trim(param.m_value);
        return std::string();
    };
    plot.title = wellValue("WELL");
    if (plot.title.empty()) plot.title = in;
    std::string subtitle = in;
    for (const char* mnemonic : {"COMP", "FLD", "UWI", "API"}) {
        const std::string text = wellValue(mnemonic);
        if (!text.empty()) subtitle += "  \xC2\xB7  " + text;
    }
    subtitle += "  \xC2\xB7  section " + data->m_name;
    plot.subtitle = subtitle;

    ex::TrackChoice choice = ex::ChooseTracks(*data, depthIndex, request);
    for (const std::string& note : choice.notes)
        std::fprintf(stderr, "quarl-plot: note: %s\n", note.c_str());
    if (!choice.error.empty()) {
        std::fprintf(stderr, "quarl-plot: %s: %s\n", in.c_str(), choice.error.c_str());
        return 1;
    }
    if (choice.tracks.empty()) {
        std::fprintf(stderr,
                     "quarl-plot: %s: section %s has no numeric curve to draw besides the depth\n",
                     in.c_str(), data->m_name.c_str());
        return 1;
    }
    plot.tracks = std::move(choice.tracks);
    plot.depthAfter = choice.depthAfter;
    // Only the copies to be drawn stay in memory while the picture is made.
    data.reset();
    reader.Close();

    const std::string svg = ex::RenderLogPlot(plot);
    std::ofstream file(out, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "quarl-plot: cannot create %s\n", out.c_str());
        return 1;
    }
    file.write(svg.data(), static_cast<std::streamsize>(svg.size()));
    file.close();
    if (!file) {
        std::fprintf(stderr, "quarl-plot: writing %s failed\n", out.c_str());
        return 1;
    }
    std::printf("%s: %zu track(s), %zu rows, depth %s to %s %s\n", out.c_str(), plot.tracks.size(),
                plot.depths.size(),
                common::FormatNumber(plot.depths.empty() ? 0 : plot.depths.front()).c_str(),
                common::FormatNumber(plot.depths.empty() ? 0 : plot.depths.back()).c_str(),
                plot.depthUnit.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    return ex::RunGuarded("quarl-plot", Run, argc, argv);
}
