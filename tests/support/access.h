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
#include "vorn.h"
#include "vorn/records.h"

struct vorn_access {
    static constexpr auto fill_vorn = &vorn::fill_vorn;
    static constexpr auto chk_numbers = &vorn::chk_numbers;
    static constexpr auto chk_connect = &vorn::chk_connect;
    static constexpr auto selectm = &vorn::selectm;
    static constexpr auto count_photo = &vorn::count_photo;
    static constexpr auto verif = &vorn::verif;
    static constexpr auto deselall = &vorn::deselall;
    static constexpr auto checkm = &vorn::checkm;
    static constexpr auto searchnam = &vorn::searchnam;
    static constexpr auto vornallocate = &vorn::vornallocate;
    static constexpr auto fill_isplit = &vorn::fill_isplit;
    static constexpr auto fill_pt = &vorn::fill_pt;
    static constexpr auto duplicate = &vorn::duplicate;
    static constexpr auto fill_measure = &vorn::fill_measure;
    static constexpr auto vornsearch = &vorn::vornsearch;
    static constexpr auto fill_gps = &vorn::fill_gps;
    static constexpr auto fill_photo = &vorn::fill_photo;
    static constexpr auto fill_connect = &vorn::fill_connect;
    static constexpr auto clean_templump = &vorn::clean_templump;
    static constexpr auto invers = &vorn::invers;
    static constexpr auto trigapprox = &vorn::trigapprox;
    static constexpr auto summary = &vorn::summary;
    static constexpr auto lumpcheck = &vorn::lumpcheck;
    static constexpr auto datumcheck = &vorn::datumcheck;
    static constexpr auto vornapprox = &vorn::vornapprox;
    static constexpr auto set_prepare = &vorn::set_prepare;
    static constexpr auto set_connect = &vorn::set_connect;
    static constexpr auto summary2 = &vorn::summary2;
    static constexpr auto outputapprox = &vorn::outputapprox;
    static constexpr auto showpoints = &vorn::showpoints;
    static constexpr auto showmeasures = &vorn::showmeasures;
    static constexpr auto handover = &vorn::handover;
    static constexpr auto take_temp_res = &vorn::take_temp_res;
    static constexpr auto clean = &vorn::clean;
    static constexpr auto backtoproject = &vorn::backtoproject;
    static constexpr auto writecon = &vorn::writecon;
    static constexpr auto fill_obs_stat = &vorn::fill_obs_stat;
    static constexpr auto fill_obs_res = &vorn::fill_obs_res;
    static constexpr auto fill_1D = &vorn::fill_1D;
    static constexpr auto fill_sta2D = &vorn::fill_sta2D;
    static constexpr auto fill_tar2D = &vorn::fill_tar2D;
    static constexpr auto fill_sta3D = &vorn::fill_sta3D;
    static constexpr auto fill_tar3D = &vorn::fill_tar3D;
    static constexpr auto usesimili = &vorn::usesimili;
    static constexpr auto backtrans = &vorn::backtrans;
    static constexpr auto backsol = &vorn::backsol;
    static constexpr auto flagdecode = &vorn::flagdecode;
    static constexpr auto pproject = &vorn::pproject;
    static constexpr auto papprox = &vorn::papprox;
    static constexpr auto psimplex = &vorn::psimplex;
    static constexpr auto pcompact = &vorn::pcompact;
    static constexpr auto pjordan = &vorn::pjordan;
    static constexpr auto pfeedback = &vorn::pfeedback;
    static constexpr auto pname = &vorn::pname;
    static constexpr auto out = &vorn::out;
    static constexpr auto idebug = &vorn::idebug;
    static constexpr auto dim = &vorn::dim;
    static constexpr auto irun = &vorn::irun;
    static constexpr auto iearth = &vorn::iearth;
    static constexpr auto radius = &vorn::radius;
    static constexpr auto trans = &vorn::trans;
    static constexpr auto horigin = &vorn::horigin;
    static constexpr auto latitude = &vorn::latitude;
    static constexpr auto itmax = &vorn::itmax;
    static constexpr auto convergence = &vorn::convergence;
    static constexpr auto iredux = &vorn::iredux;
    static constexpr auto iunit = &vorn::iunit;
    static constexpr auto nlump = &vorn::nlump;
    static constexpr auto lumps = &vorn::lumps;
    static constexpr auto ncamera = &vorn::ncamera;
    static constexpr auto cameras = &vorn::cameras;
    static constexpr auto icon = &vorn::icon;
    static constexpr auto nexport = &vorn::nexport;
    static constexpr auto nimport = &vorn::nimport;
    static constexpr auto lcon = &vorn::lcon;
    static constexpr auto Qcon = &vorn::Qcon;
    static constexpr auto psta = &vorn::psta;
    static constexpr auto npsta = &vorn::npsta;
    static constexpr auto ptar = &vorn::ptar;
    static constexpr auto nptar = &vorn::nptar;
    static constexpr auto pdist = &vorn::pdist;
    static constexpr auto npdist = &vorn::npdist;
    static constexpr auto pdifh = &vorn::pdifh;
    static constexpr auto npdifh = &vorn::npdifh;
    static constexpr auto pdir1 = &vorn::pdir1;
    static constexpr auto npdir1 = &vorn::npdir1;
    static constexpr auto pdir2 = &vorn::pdir2;
    static constexpr auto npdir2 = &vorn::npdir2;
    static constexpr auto pi = &vorn::pi;
    static constexpr auto iapprox = &vorn::iapprox;
    static constexpr auto points = &vorn::points;
    static constexpr auto nsta = &vorn::nsta;
    static constexpr auto ntar = &vorn::ntar;
    static constexpr auto npoints = &vorn::npoints;
    static constexpr auto dist = &vorn::dist;
    static constexpr auto difh = &vorn::difh;
    static constexpr auto dir1 = &vorn::dir1;
    static constexpr auto dir2 = &vorn::dir2;
    static constexpr auto ndist = &vorn::ndist;
    static constexpr auto ndifh = &vorn::ndifh;
    static constexpr auto ndir1 = &vorn::ndir1;
    static constexpr auto ndir2 = &vorn::ndir2;
    static constexpr auto nweighted = &vorn::nweighted;
    static constexpr auto nfixh = &vorn::nfixh;
    static constexpr auto sdist = &vorn::sdist;
    static constexpr auto sdifh = &vorn::sdifh;
    static constexpr auto sdir1 = &vorn::sdir1;
    static constexpr auto sdir2 = &vorn::sdir2;
    static constexpr auto sigma0 = &vorn::sigma0;
    static constexpr auto obsuv1 = &vorn::obsuv1;
    static constexpr auto obsuv2 = &vorn::obsuv2;
    static constexpr auto nobsuv = &vorn::nobsuv;
    static constexpr auto suv = &vorn::suv;
    static constexpr auto az = &vorn::az;
    static constexpr auto naz = &vorn::naz;
    static constexpr auto saz = &vorn::saz;
    static constexpr auto gps = &vorn::gps;
    static constexpr auto ngps = &vorn::ngps;
    static constexpr auto sgps = &vorn::sgps;
    static constexpr auto nstat100 = &vorn::nstat100;
    static constexpr auto ia1 = &vorn::ia1;
    static constexpr auto nunk1 = &vorn::nunk1;
    static constexpr auto nunk2 = &vorn::nunk2;
    static constexpr auto ndatum = &vorn::ndatum;
    static constexpr auto nunk = &vorn::nunk;
    static constexpr auto datum = &vorn::datum;
    static constexpr auto temp_res = &vorn::temp_res;
    static constexpr auto sidefiles = &vorn::sidefiles;
    static constexpr auto pointindex = &vorn::pointindex;
    static constexpr auto hostindex = &vorn::hostindex;
    static constexpr auto begun = &vorn::begun;
    static constexpr auto ready = &vorn::ready;
};

#define V(object, member) ((object).*vorn_access::member)

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
    static constexpr auto compute = &approx::compute;
    static constexpr auto datum_approx = &approx::datum_approx;
    static constexpr auto istotal = &approx::istotal;
    static constexpr auto spread = &approx::spread;
    static constexpr auto start_spread = &approx::start_spread;
    static constexpr auto height_spread = &approx::height_spread;
    static constexpr auto resec = &approx::resec;
    static constexpr auto resec3 = &approx::resec3;
    static constexpr auto intersect = &approx::intersect;
    static constexpr auto start_resec = &approx::start_resec;
    static constexpr auto colli_spread = &approx::colli_spread;
    static constexpr auto buildtabpair = &approx::buildtabpair;
    static constexpr auto colli_base = &approx::colli_base;
    static constexpr auto scale_by_bar = &approx::scale_by_bar;
    static constexpr auto spread_step = &approx::spread_step;
    static constexpr auto transformations = &approx::transformations;
    static constexpr auto t2pt = &approx::t2pt;
    static constexpr auto t1pt = &approx::t1pt;
    static constexpr auto guess_spread = &approx::guess_spread;
    static constexpr auto guess_o1o2 = &approx::guess_o1o2;
    static constexpr auto guess_check = &approx::guess_check;
    static constexpr auto guess_approx = &approx::guess_approx;
    static constexpr auto guess_resid = &approx::guess_resid;
    static constexpr auto guess_solve = &approx::guess_solve;
    static constexpr auto guess_normal = &approx::guess_normal;
    static constexpr auto patch_spread = &approx::patch_spread;
    static constexpr auto take_lists = &approx::take_lists;
    static constexpr auto drop_lists = &approx::drop_lists;
    static constexpr auto fill_table = &approx::fill_table;
    static constexpr auto number = &approx::number;
    static constexpr auto pproject = &approx::pproject;
    static constexpr auto out = &approx::out;
    static constexpr auto pi = &approx::pi;
    static constexpr auto idebug = &approx::idebug;
    static constexpr auto dim = &approx::dim;
    static constexpr auto points = &approx::points;
    static constexpr auto nsta = &approx::nsta;
    static constexpr auto ntar = &approx::ntar;
    static constexpr auto npoints = &approx::npoints;
    static constexpr auto dist = &approx::dist;
    static constexpr auto dir1 = &approx::dir1;
    static constexpr auto dir2 = &approx::dir2;
    static constexpr auto ndist = &approx::ndist;
    static constexpr auto ndir1 = &approx::ndir1;
    static constexpr auto ndir2 = &approx::ndir2;
    static constexpr auto ia1 = &approx::ia1;
    static constexpr auto nunk1 = &approx::nunk1;
    static constexpr auto nunk2 = &approx::nunk2;
    static constexpr auto nunk = &approx::nunk;
    static constexpr auto shots = &approx::shots;
    static constexpr auto seen = &approx::seen;
    static constexpr auto seenby = &approx::seenby;
    static constexpr auto lengths = &approx::lengths;
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

#endif
