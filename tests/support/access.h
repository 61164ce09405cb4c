// White-box access for tests: pointers to the private members of the engine's classes.
//
//   V(run, nsta)             a field of a vorn
//   V(run, fill_vorn)()      an operation

#ifndef TESTS_ACCESS_H
#define TESTS_ACCESS_H

#include "approx/approx.h"
#include "simili/simili.h"
#include "solution/solution.h"
#include "solvers/compact.h"
#include "solvers/jordan.h"
#include "solvers/simplex.h"
#include "vorn/run.h"
#include "vorn/records.h"

namespace vornengine {

struct vorn_access {
    static constexpr auto fill_vorn = &vornrun::fill_vorn;
    static constexpr auto chk_numbers = &vornrun::chk_numbers;
    static constexpr auto chk_connect = &vornrun::chk_connect;
    static constexpr auto selectm = &vornrun::selectm;
    static constexpr auto count_photo = &vornrun::count_photo;
    static constexpr auto verif = &vornrun::verif;
    static constexpr auto deselall = &vornrun::deselall;
    static constexpr auto checkm = &vornrun::checkm;
    static constexpr auto searchnam = &vornrun::searchnam;
    static constexpr auto vornallocate = &vornrun::vornallocate;
    static constexpr auto fill_isplit = &vornrun::fill_isplit;
    static constexpr auto fill_pt = &vornrun::fill_pt;
    static constexpr auto duplicate = &vornrun::duplicate;
    static constexpr auto fill_measure = &vornrun::fill_measure;
    static constexpr auto vornsearch = &vornrun::vornsearch;
    static constexpr auto fill_gps = &vornrun::fill_gps;
    static constexpr auto fill_photo = &vornrun::fill_photo;
    static constexpr auto fill_connect = &vornrun::fill_connect;
    static constexpr auto clean_templump = &vornrun::clean_templump;
    static constexpr auto invers = &vornrun::invers;
    static constexpr auto trigapprox = &vornrun::trigapprox;
    static constexpr auto summary = &vornrun::summary;
    static constexpr auto lumpcheck = &vornrun::lumpcheck;
    static constexpr auto datumcheck = &vornrun::datumcheck;
    static constexpr auto vornapprox = &vornrun::vornapprox;
    static constexpr auto set_prepare = &vornrun::set_prepare;
    static constexpr auto set_connect = &vornrun::set_connect;
    static constexpr auto summary2 = &vornrun::summary2;
    static constexpr auto outputapprox = &vornrun::outputapprox;
    static constexpr auto showpoints = &vornrun::showpoints;
    static constexpr auto showmeasures = &vornrun::showmeasures;
    static constexpr auto take_temp_res = &vornrun::take_temp_res;
    static constexpr auto clean = &vornrun::clean;
    static constexpr auto backtoproject = &vornrun::backtoproject;
    static constexpr auto writecon = &vornrun::writecon;
    static constexpr auto fill_obs_stat = &vornrun::fill_obs_stat;
    static constexpr auto fill_obs_res = &vornrun::fill_obs_res;
    static constexpr auto fill_1D = &vornrun::fill_1D;
    static constexpr auto fill_sta2D = &vornrun::fill_sta2D;
    static constexpr auto fill_tar2D = &vornrun::fill_tar2D;
    static constexpr auto fill_sta3D = &vornrun::fill_sta3D;
    static constexpr auto fill_tar3D = &vornrun::fill_tar3D;
    static constexpr auto usesimili = &vornrun::usesimili;
    static constexpr auto backtrans = &vornrun::backtrans;
    static constexpr auto backsol = &vornrun::backsol;
    static constexpr auto flagdecode = &vornrun::flagdecode;
    static constexpr auto pproject = &vornrun::pproject;
    static constexpr auto papprox = &vornrun::papprox;
    static constexpr auto psimplex = &vornrun::psimplex;
    static constexpr auto pcompact = &vornrun::pcompact;
    static constexpr auto pjordan = &vornrun::pjordan;
    static constexpr auto pfeedback = &vornrun::pfeedback;
    static constexpr auto pname = &vornrun::pname;
    static constexpr auto out = &vornrun::out;
    static constexpr auto idebug = &vornrun::idebug;
    static constexpr auto dim = &vornrun::dim;
    static constexpr auto irun = &vornrun::irun;
    static constexpr auto iearth = &vornrun::iearth;
    static constexpr auto radius = &vornrun::radius;
    static constexpr auto trans = &vornrun::trans;
    static constexpr auto horigin = &vornrun::horigin;
    static constexpr auto latitude = &vornrun::latitude;
    static constexpr auto itmax = &vornrun::itmax;
    static constexpr auto convergence = &vornrun::convergence;
    static constexpr auto iredux = &vornrun::iredux;
    static constexpr auto iunit = &vornrun::iunit;
    static constexpr auto iphoto = &vornrun::iphoto;
    static constexpr auto nlump = &vornrun::nlump;
    static constexpr auto lumps = &vornrun::lumps;
    static constexpr auto ncamera = &vornrun::ncamera;
    static constexpr auto cameras = &vornrun::cameras;
    static constexpr auto icon = &vornrun::icon;
    static constexpr auto nexport = &vornrun::nexport;
    static constexpr auto nimport = &vornrun::nimport;
    static constexpr auto lcon = &vornrun::lcon;
    static constexpr auto Qcon = &vornrun::Qcon;
    static constexpr auto psta = &vornrun::psta;
    static constexpr auto npsta = &vornrun::npsta;
    static constexpr auto ptar = &vornrun::ptar;
    static constexpr auto nptar = &vornrun::nptar;
    static constexpr auto pdist = &vornrun::pdist;
    static constexpr auto npdist = &vornrun::npdist;
    static constexpr auto pdifh = &vornrun::pdifh;
    static constexpr auto npdifh = &vornrun::npdifh;
    static constexpr auto pdir1 = &vornrun::pdir1;
    static constexpr auto npdir1 = &vornrun::npdir1;
    static constexpr auto pdir2 = &vornrun::pdir2;
    static constexpr auto npdir2 = &vornrun::npdir2;
    static constexpr auto pi = &vornrun::pi;
    static constexpr auto iapprox = &vornrun::iapprox;
    static constexpr auto points = &vornrun::points;
    static constexpr auto nsta = &vornrun::nsta;
    static constexpr auto ntar = &vornrun::ntar;
    static constexpr auto npoints = &vornrun::npoints;
    static constexpr auto dist = &vornrun::dist;
    static constexpr auto difh = &vornrun::difh;
    static constexpr auto dir1 = &vornrun::dir1;
    static constexpr auto dir2 = &vornrun::dir2;
    static constexpr auto ndist = &vornrun::ndist;
    static constexpr auto ndifh = &vornrun::ndifh;
    static constexpr auto ndir1 = &vornrun::ndir1;
    static constexpr auto ndir2 = &vornrun::ndir2;
    static constexpr auto nweighted = &vornrun::nweighted;
    static constexpr auto nfixh = &vornrun::nfixh;
    static constexpr auto sdist = &vornrun::sdist;
    static constexpr auto sdifh = &vornrun::sdifh;
    static constexpr auto sdir1 = &vornrun::sdir1;
    static constexpr auto sdir2 = &vornrun::sdir2;
    static constexpr auto sigma0 = &vornrun::sigma0;
    static constexpr auto obsuv1 = &vornrun::obsuv1;
    static constexpr auto obsuv2 = &vornrun::obsuv2;
    static constexpr auto nobsuv = &vornrun::nobsuv;
    static constexpr auto suv = &vornrun::suv;
    static constexpr auto az = &vornrun::az;
    static constexpr auto naz = &vornrun::naz;
    static constexpr auto saz = &vornrun::saz;
    static constexpr auto gps = &vornrun::gps;
    static constexpr auto ngps = &vornrun::ngps;
    static constexpr auto sgps = &vornrun::sgps;
    static constexpr auto nstat100 = &vornrun::nstat100;
    static constexpr auto ia1 = &vornrun::ia1;
    static constexpr auto nunk1 = &vornrun::nunk1;
    static constexpr auto nunk2 = &vornrun::nunk2;
    static constexpr auto ndatum = &vornrun::ndatum;
    static constexpr auto nunk = &vornrun::nunk;
    static constexpr auto datum = &vornrun::datum;
    static constexpr auto temp_res = &vornrun::temp_res;
    static constexpr auto sidefiles = &vornrun::sidefiles;
    static constexpr auto pointindex = &vornrun::pointindex;
    static constexpr auto hostindex = &vornrun::hostindex;
    static constexpr auto begun = &vornrun::begun;
    static constexpr auto ready = &vornrun::ready;
};

inline vornrun &state(const vorn &run) { return inside::of(run); }

#define V(object, member) (state(object).*vorn_access::member)

struct solution_access {
    static constexpr auto normal = &solution::normal;
    static constexpr auto statalloc = &solution::statalloc;
    static constexpr auto freestat = &solution::freestat;
    static constexpr auto norm_dist = &solution::norm_dist;
    static constexpr auto norm_difh = &solution::norm_difh;
    static constexpr auto norm_dir1 = &solution::norm_dir1;
    static constexpr auto norm_dir2 = &solution::norm_dir2;
    static constexpr auto norm_az = &solution::norm_az;
    static constexpr auto setrot = &solution::setrot;
    static constexpr auto distance = &solution::distance;
    static constexpr auto distrow1 = &solution::distrow1;
    static constexpr auto distrow2 = &solution::distrow2;
    static constexpr auto difhrow = &solution::difhrow;
    static constexpr auto dir1comp = &solution::dir1comp;
    static constexpr auto dir1row1 = &solution::dir1row1;
    static constexpr auto dir1row2 = &solution::dir1row2;
    static constexpr auto dir2comp = &solution::dir2comp;
    static constexpr auto dir2row1 = &solution::dir2row1;
    static constexpr auto dir2row2 = &solution::dir2row2;
    static constexpr auto azcomp = &solution::azcomp;
    static constexpr auto distred = &solution::distred;
    static constexpr auto geomvec = &solution::geomvec;
    static constexpr auto dir1red = &solution::dir1red;
    static constexpr auto dir2red = &solution::dir2red;
    static constexpr auto norm_photo = &solution::norm_photo;
    static constexpr auto image_coor = &solution::image_coor;
    static constexpr auto photorow1 = &solution::photorow1;
    static constexpr auto photorow2 = &solution::photorow2;
    static constexpr auto norm_gps = &solution::norm_gps;
    static constexpr auto lumpdelta = &solution::lumpdelta;
    static constexpr auto lumppoint = &solution::lumppoint;
    static constexpr auto lumpderiv = &solution::lumpderiv;
    static constexpr auto lumprow = &solution::lumprow;
    static constexpr auto norm_lump = &solution::norm_lump;
    static constexpr auto norm_fixh = &solution::norm_fixh;
    static constexpr auto norm_weighted = &solution::norm_weighted;
    static constexpr auto traceobs = &solution::traceobs;
    static constexpr auto setcentre = &solution::setcentre;
    static constexpr auto importdiff = &solution::importdiff;
    static constexpr auto indeximport = &solution::indeximport;
    static constexpr auto dropimport = &solution::dropimport;
    static constexpr auto withinturn = &solution::withinturn;
    static constexpr auto Q = &solution::Q;
    static constexpr auto rescov = &solution::rescov;
    static constexpr auto variances = &solution::variances;
    static constexpr auto resanalysis = &solution::resanalysis;
    static constexpr auto stddev = &solution::stddev;
    static constexpr auto justres = &solution::justres;
    static constexpr auto gpsres = &solution::gpsres;
    static constexpr auto classcode = &solution::classcode;
    static constexpr auto filllimits = &solution::filllimits;
    static constexpr auto classify = &solution::classify;
    static constexpr auto ellipse = &solution::ellipse;
    static constexpr auto findpoint = &solution::findpoint;
    static constexpr auto relellipse = &solution::relellipse;
    static constexpr auto applydelta = &solution::applydelta;
    static constexpr auto corrections = &solution::corrections;
    static constexpr auto finalresults = &solution::finalresults;
    static constexpr auto justout = &solution::justout;
    static constexpr auto residualtables = &solution::residualtables;
    static constexpr auto writeQcon = &solution::writeQcon;
    static constexpr auto input_for_tessalpin = &solution::input_for_tessalpin;
    static constexpr auto stationcofactors = &solution::stationcofactors;
    static constexpr auto pfeedback = &solution::pfeedback;
    static constexpr auto pproject = &solution::pproject;
    static constexpr auto pname = &solution::pname;
    static constexpr auto out = &solution::out;
    static constexpr auto irun = &solution::irun;
    static constexpr auto idebug = &solution::idebug;
    static constexpr auto dim = &solution::dim;
    static constexpr auto iearth = &solution::iearth;
    static constexpr auto radius = &solution::radius;
    static constexpr auto trans = &solution::trans;
    static constexpr auto horigin = &solution::horigin;
    static constexpr auto latitude = &solution::latitude;
    static constexpr auto itmax = &solution::itmax;
    static constexpr auto convergence = &solution::convergence;
    static constexpr auto pi = &solution::pi;
    static constexpr auto points = &solution::points;
    static constexpr auto dist = &solution::dist;
    static constexpr auto difh = &solution::difh;
    static constexpr auto dir1 = &solution::dir1;
    static constexpr auto dir2 = &solution::dir2;
    static constexpr auto nsta = &solution::nsta;
    static constexpr auto ntar = &solution::ntar;
    static constexpr auto npoints = &solution::npoints;
    static constexpr auto ndist = &solution::ndist;
    static constexpr auto ndifh = &solution::ndifh;
    static constexpr auto ndir1 = &solution::ndir1;
    static constexpr auto ndir2 = &solution::ndir2;
    static constexpr auto nweighted = &solution::nweighted;
    static constexpr auto nfixh = &solution::nfixh;
    static constexpr auto sdist = &solution::sdist;
    static constexpr auto sdifh = &solution::sdifh;
    static constexpr auto sdir1 = &solution::sdir1;
    static constexpr auto sdir2 = &solution::sdir2;
    static constexpr auto sigma0 = &solution::sigma0;
    static constexpr auto naz = &solution::naz;
    static constexpr auto ngps = &solution::ngps;
    static constexpr auto az = &solution::az;
    static constexpr auto gps = &solution::gps;
    static constexpr auto saz = &solution::saz;
    static constexpr auto sgps = &solution::sgps;
    static constexpr auto iredux = &solution::iredux;
    static constexpr auto nunk1 = &solution::nunk1;
    static constexpr auto nunk2 = &solution::nunk2;
    static constexpr auto ndatum = &solution::ndatum;
    static constexpr auto nunk = &solution::nunk;
    static constexpr auto datum = &solution::datum;
    static constexpr auto centre = &solution::centre;
    static constexpr auto rot = &solution::rot;
    static constexpr auto a1 = &solution::a1;
    static constexpr auto a2 = &solution::a2;
    static constexpr auto ia1 = &solution::ia1;
    static constexpr auto ia2 = &solution::ia2;
    static constexpr auto rhs = &solution::rhs;
    static constexpr auto delta = &solution::delta;
    static constexpr auto inv = &solution::inv;
    static constexpr auto confidence = &solution::confidence;
    static constexpr auto nclass = &solution::nclass;
    static constexpr auto hrange = &solution::hrange;
    static constexpr auto hlim = &solution::hlim;
    static constexpr auto hnorm = &solution::hnorm;
    static constexpr auto hall = &solution::hall;
    static constexpr auto hdist = &solution::hdist;
    static constexpr auto hdifh = &solution::hdifh;
    static constexpr auto hdir1 = &solution::hdir1;
    static constexpr auto hdir2 = &solution::hdir2;
    static constexpr auto haz = &solution::haz;
    static constexpr auto hgps1 = &solution::hgps1;
    static constexpr auto hgps2 = &solution::hgps2;
    static constexpr auto hgps3 = &solution::hgps3;
    static constexpr auto nlump = &solution::nlump;
    static constexpr auto lumps = &solution::lumps;
    static constexpr auto icon = &solution::icon;
    static constexpr auto nexport = &solution::nexport;
    static constexpr auto nimport = &solution::nimport;
    static constexpr auto lcon = &solution::lcon;
    static constexpr auto Qcon = &solution::Qcon;
    static constexpr auto nobsuv = &solution::nobsuv;
    static constexpr auto obsuv1 = &solution::obsuv1;
    static constexpr auto obsuv2 = &solution::obsuv2;
    static constexpr auto suv = &solution::suv;
    static constexpr auto ncamera = &solution::ncamera;
    static constexpr auto cameras = &solution::cameras;
    static constexpr auto temp_res = &solution::temp_res;
    static constexpr auto sidefiles = &solution::sidefiles;
    static constexpr auto ptar = &solution::ptar;
    static constexpr auto nptar = &solution::nptar;
};

#define S(object, member) ((object).*solution_access::member)

struct jordan_access {
    static constexpr auto gaussj = &jordan::gaussj;
    static constexpr auto swapd = &jordan::swapd;
    static constexpr auto clampdet = &jordan::clampdet;
    static constexpr auto seterror = &jordan::seterror;
    static constexpr auto geterror = &jordan::geterror;
    static constexpr auto checkalloc = &jordan::checkalloc;
    static constexpr auto tiny = &jordan::tiny;
    static constexpr auto ierralloc = &jordan::ierralloc;
    static constexpr auto ierror = &jordan::ierror;
    static constexpr auto norm = &jordan::norm;
};

#define J(object, member) ((object).*jordan_access::member)

struct compact_access {
    static constexpr auto compadd = &compact::compadd;
    static constexpr auto cnorm = &compact::cnorm;
    static constexpr auto work = &compact::work;
    static constexpr auto element = &compact::element;
    static constexpr auto exchange = &compact::exchange;
    static constexpr auto exchanges = &compact::exchanges;
    static constexpr auto addresses = &compact::addresses;
};

#define C(object, member) ((object).*compact_access::member)

struct approx_access {
    static constexpr auto net = &approx::net;
};

#define X(object, member) ((object).*approx_access::member)

struct simplex_access {
    static constexpr auto dropconstants = &simplex::dropconstants;
    static constexpr auto allocate = &simplex::allocate;
    static constexpr auto fillweights = &simplex::fillweights;
    static constexpr auto copyrow = &simplex::copyrow;
    static constexpr auto datumrows = &simplex::datumrows;
    static constexpr auto balance = &simplex::balance;
    static constexpr auto takedesign = &simplex::takedesign;
    static constexpr auto takenormal = &simplex::takenormal;
    static constexpr auto design = &simplex::design;
    static constexpr auto equalize = &simplex::equalize;
    static constexpr auto artificialstage = &simplex::artificialstage;
    static constexpr auto removeartificial = &simplex::removeartificial;
    static constexpr auto unknownstage = &simplex::unknownstage;
    static constexpr auto residualstage = &simplex::residualstage;
    static constexpr auto exchanges = &simplex::exchanges;
    static constexpr auto decode = &simplex::decode;
    static constexpr auto search1 = &simplex::search1;
    static constexpr auto search2 = &simplex::search2;
    static constexpr auto pivotrow = &simplex::pivotrow;
    static constexpr auto exchange = &simplex::exchange;
    static constexpr auto readout = &simplex::readout;
    static constexpr auto unknowntable = &simplex::unknowntable;
    static constexpr auto debugsimplex = &simplex::debugsimplex;
    static constexpr auto gcost = &simplex::gcost;
    static constexpr auto cost = &simplex::cost;
    static constexpr auto inplus = &simplex::inplus;
    static constexpr auto ibase = &simplex::ibase;
    static constexpr auto a = &simplex::a;
    static constexpr auto newpd = &simplex::newpd;
    static constexpr auto nobs = &simplex::nobs;
    static constexpr auto nplan = &simplex::nplan;
    static constexpr auto nextra = &simplex::nextra;
};

#define L1(object, member) ((object).*simplex_access::member)

struct simili_access {
    static constexpr auto nref = &simili::nref;
    static constexpr auto nend = &simili::nend;
    static constexpr auto pref = &simili::pref;
    static constexpr auto pend = &simili::pend;
    static constexpr auto res = &simili::res;
    static constexpr auto out = &simili::out;
    static constexpr auto npair = &simili::npair;
    static constexpr auto pair = &simili::pair;
    static constexpr auto pi = &simili::pi;
    static constexpr auto irot = &simili::irot;
    static constexpr auto iscale = &simili::iscale;
    static constexpr auto nparam = &simili::nparam;
    static constexpr auto scale = &simili::scale;
    static constexpr auto jacobi = &simili::jacobi;
    static constexpr auto eigsrt = &simili::eigsrt;
    static constexpr auto rotangles = &simili::rotangles;
    static constexpr auto buildsim = &simili::buildsim;
    static constexpr auto simresidual = &simili::simresidual;
    static constexpr auto packidx = &simili::packidx;
};

#define SIM(object, member) ((object).*simili_access::member)

} // namespace vornengine

using namespace vornengine;

#endif
