#pragma once

#include <vector>

#include "codec/natural/Mix.h"

namespace zeb::natural {

/// Finds the reachable colour that looks most like a colour outside the tetrahedron. A search takes some
/// 30 microseconds: the build makes a map of the results (`ReachableMap.h`), which programs use.
class ReachableSearch {
public:
    ReachableSearch();

    /// Returns the mix nearest to `colour`. The distance is that of OKLab (Ottosson 2020) with differences of
    /// hue weighted by 1.25: dL^2 + dC^2 + 1.25^2 dH^2. Returns the exact mix of a reachable colour.
    Mix nearest(const Colour& colour) const;

private:
    /// A colour in OKLab.
    struct Appearance {
        double lightness;
        double a;
        double b;
        double chroma;
    };
    struct Candidate {
        Mix mix;
        Appearance appearance;
    };

    static Appearance appearanceOf(const Colour& colour);
    static double distance(const Appearance& left, const Appearance& right);
    void add(const Mix& mix);

    std::vector<Candidate> m_candidates;  ///< a grid on the faces, dense near black
};

}  // namespace zeb::natural
