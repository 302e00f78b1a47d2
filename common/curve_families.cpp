#include "common/curve_families.h"

#include <cstring>
#include <iterator>

namespace quarl::common {

namespace {

// Scales as logs are printed: gamma ray 0-150 API, caliper 6-16 in,
// resistivity 0.2-2000 ohm.m on four decades and a half of log paper,
// neutron porosity 0.45 to -0.15 v/v, bulk density 1.95-2.95 g/cm3,
// sonic 140-40 us/ft; the photoelectric factor 0-10 b/e.
const CurveFamily kFamilies[] = {
    {"gamma_ray", "Gamma ray", FamilyTrack::kFirst, 0.0, 150.0, false, "API",
     "GR GRC GRD GRS GAM GAMMA GR_EDTC GRGC SGR CGR HSGR HCGR ECGR GRN GRR GAPI"},
    {"sp", "Spontaneous potential", FamilyTrack::kFirst, -100.0, 100.0, false, "mV",
     "SP SPC SPBL SSP SPR"},
    {"caliper", "Caliper", FamilyTrack::kFirst, 6.0, 16.0, false, "in",
     "CALI CAL CALS CALX CALY HCAL C1 C2 CAL1 CAL2 DCAL BS"},
    {"resistivity", "Resistivity", FamilyTrack::kResistivity, 0.2, 2000.0, true, "ohm.m",
     "ILD ILM IL RT RILD RILM RES RDEP RMED RSHAL LLD LLS LL3 LL8 MSFL SFL SFLU SFLA SN LN "
     "AT90 AT60 AT30 AT20 AT10 AHT90 AHT60 AHT30 AHT20 AHT10 HDRS HMRS RXO RXOZ MLL MINV MNOR "
     "RLA5 RLA4 RLA3 RLA2 RLA1 RD RM RS"},
    {"neutron", "Neutron porosity", FamilyTrack::kPorosity, 0.45, -0.15, false, "v/v",
     "NPHI CNC CNCF TNPH NPOR NPHI_LS CN PHIN NEU NPSS NPLS APLC TNPH_LS CNPOR"},
    {"density", "Bulk density", FamilyTrack::kPorosity, 1.95, 2.95, false, "g/cm3",
     "RHOB DEN ZDEN RHOZ DENS RHO RHOB_CORR BDEL BDCFM HDEN"},
    {"sonic", "Sonic slowness", FamilyTrack::kPorosity, 140.0, 40.0, false, "us/ft",
     "DT AC DTC DTCO DT4P DTLN DTL DT24 DTCOMP SONIC"},
    {"pe", "Photoelectric factor", FamilyTrack::kOther, 0.0, 10.0, false, "b/e",
     "PEF PE PEFZ PEF8 PEFL"},
    {"density_correction", "Density correction", FamilyTrack::kOther, -0.25, 0.25, false, "g/cm3",
     "DRHO DCOR HDRA ZCOR"},
    {"shear_sonic", "Shear slowness", FamilyTrack::kOther, 340.0, 40.0, false, "us/ft",
     "DTS DTSM DTSH DT4S DTSHEAR"},
};

bool EqualNoCase(const char* a, size_t length, const char* b)
{
    for (size_t i = 0; i < length; ++i) {
        char x = a[i];
        if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 'a' + 'A');
        if (x != b[i]) return false;
    }
    return b[length] == '\0' || b[length] == ' ';
}

// Whether `mnemonic` (its first `length` bytes) is one of the words of `list`.
bool InList(const char* mnemonic, size_t length, const char* list)
{
    if (length == 0) return false;
    for (const char* word = list; *word;) {
        if (EqualNoCase(mnemonic, length, word)) return true;
        const char* space = std::strchr(word, ' ');
        if (!space) break;
        word = space + 1;
    }
    return false;
}

// The length of a mnemonic without a ":2"-style suffix of duplicate names.
size_t StemLength(const std::string& mnemonic)
{
    const size_t colon = mnemonic.find(':');
    return colon == std::string::npos ? mnemonic.size() : colon;
}

}  // namespace

const CurveFamily* CurveFamilies(size_t& count)
{
    count = std::size(kFamilies);
    return kFamilies;
}

const CurveFamily* FindCurveFamily(const std::string& mnemonic)
{
    for (const CurveFamily& family : kFamilies)
        if (InList(mnemonic.c_str(), StemLength(mnemonic), family.mnemonics)) return &family;
    return nullptr;
}

const CurveFamily* FindCurveFamilyByName(const std::string& name)
{
    for (const CurveFamily& family : kFamilies)
        if (name == family.name) return &family;
    return nullptr;
}

bool IsIndexMnemonic(const std::string& mnemonic)
{
    return InList(mnemonic.c_str(), StemLength(mnemonic),
                  "DEPT DEPTH M__DEPTH MD TVD TVDSS TIME ETIM INDEX");
}

}  // namespace quarl::common
