# Usage: cmake -DLIBRARY=<libsplinecore.so> -DNM=<nm> -P check_exports.cmake
execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()

set(required
  "splinecore::SegmentCP::SegmentCP()"
  "splinecore::SegmentCP::SegmentCP(splinecore::FigureCache*)"
  "splinecore::SegmentCP::SegmentCP(splinecore::SegmentCP const&)"
  "splinecore::SegmentCP::operator=(splinecore::SegmentCP const&)"
  "splinecore::SegmentCP::~SegmentCP()"
  "splinecore::SegmentCP::operator new("
  "splinecore::SegmentCP::operator delete(void*)"
  "splinecore::SegmentCP::GetMuscleCPData()" "splinecore::SegmentCP::IsMuscle()"
  "splinecore::SegmentCP::Getindelta()" "splinecore::SegmentCP::Getoutdelta()"
  "splinecore::SegmentCP::IsIn()" "splinecore::SegmentCP::OnIn()" "splinecore::SegmentCP::OffIn()"
  "splinecore::SegmentCP::SetIn(int)" "splinecore::SegmentCP::IsSkin()" "splinecore::SegmentCP::OffSkin()"
  "splinecore::SegmentCP::GetNext()" "splinecore::SegmentCP::SetNext(splinecore::SegmentCP*)"
  "splinecore::SegmentCP::GetPrev()" "splinecore::SegmentCP::SetPrev(splinecore::SegmentCP*)"
  "splinecore::SegmentCP::GetNextUplink()" "splinecore::SegmentCP::GetPrevUplink()"
  "splinecore::SegmentCP::SetHead()" "splinecore::SegmentCP::Touch(int)"
  "splinecore::DeleteCP(splinecore::SegmentCP**, splinecore::SegmentCP*)"
  "splinecore::DeleteAllCP(splinecore::SegmentCP*)"
  "splinecore::SegmentCP::Getp()" "splinecore::SegmentCP::Getmp()" "splinecore::SegmentCP::Getmusclep()"
  "splinecore::SegmentCP::Getnonmusclep()" "splinecore::SegmentCP::Getscreenp()" "splinecore::SegmentCP::SetPrevp()"
  "splinecore::SegmentCP::OffCacheditot()" "splinecore::SegmentCP::OffCachedpitot()"
  "splinecore::SegmentCP::OffCachedmitot()" "splinecore::SegmentCP::OffCachedmpitot()"
  "splinecore::SegmentCP::OffCachedscreenitot()" "splinecore::SegmentCP::OffCachedscreenpitot()"
  "splinecore::SegmentCP::GetTangents(splinecore::Vector*, splinecore::Vector*, splinecore::Vector*, splinecore::Vector*, int)"
  "splinecore::SegmentCP::Getit()" "splinecore::SegmentCP::Getot()"
  "splinecore::SegmentCP::Getscreenit()" "splinecore::SegmentCP::Getscreenot()"
  "splinecore::SegmentCP::Getmit()" "splinecore::SegmentCP::Getmot()"
  "splinecore::SegmentCP::Convert()" "splinecore::SegmentCP::MConvert()"
  "splinecore::HookSegmentCP::HookSegmentCP()"
  "splinecore::HookSegmentCP::HookSegmentCP(splinecore::FigureCache*)"
  "splinecore::HookSegmentCP::HookSegmentCP(splinecore::SegmentCP*, float)"
  "splinecore::HookSegmentCP::HookSegmentCP(splinecore::HookSegmentCP const&)"
  "splinecore::HookSegmentCP::operator=(splinecore::HookSegmentCP const&)"
  "splinecore::HookSegmentCP::~HookSegmentCP()"
  "splinecore::HookSegmentCP::GetS()" "splinecore::HookSegmentCP::SetS(float)"
  "splinecore::HookSegmentCP::Gettempv()"
  "splinecore::HookSegmentCP::Gethit()" "splinecore::HookSegmentCP::Gethot()"
  "splinecore::HookSegmentCP::Getpit()" "splinecore::HookSegmentCP::Getpot()"
  "splinecore::HookSegmentCP::Getmhit()" "splinecore::HookSegmentCP::Getmhot()"
  "splinecore::HookSegmentCP::Getmpit()" "splinecore::HookSegmentCP::Getmpot()"
  "splinecore::HookRange(splinecore::SegmentCP*)" "splinecore::MHookRange(splinecore::SegmentCP*)"
  "splinecore::CalcPoint(" "splinecore::CalcPoint2(" "splinecore::InitFD2D(" "splinecore::BumpFD2D("
  "splinecore::CurveLength(splinecore::SegmentCP*)" "splinecore::GetTotalLength(splinecore::SegmentCP*)"
  "splinecore::PositionDirectionFromSubLength("
  "splinecore::SegmentCP::AddToGroup(splinecore::GroupNode**, int)"
  "splinecore::SegmentCP::AddToGroupNoCheck(splinecore::GroupNode**)"
  "splinecore::SegmentCP::DeleteFromGroup(splinecore::GroupNode**)"
  "splinecore::SegmentCP::IsAnyGrouped()" "splinecore::FreeGroup(splinecore::GroupNode**)"
  "splinecore::AddSlice(" "splinecore::DeleteSlice(" "splinecore::MatchSliceCP(" "splinecore::GroupSlice("
  "splinecore::ReverseSlice("
  "splinecore::MoveGroup(" "splinecore::PeakGroup(" "splinecore::SmoothGroup(" "splinecore::ConvertCP("
  "splinecore::ConvertGroup(splinecore::GroupNode*, long)"
  "splinecore::ValidateFigure(" "splinecore::FigureRuleName("
  "splinecore::Figure::Figure()" "splinecore::Figure::~Figure()" "splinecore::Figure::Describe() const"
  "splinecore::Figure::AddSpline(" "splinecore::Figure::AddHook(" "splinecore::Figure::Stack("
  "splinecore::Figure::Move(" "splinecore::Figure::Reverse(int)" "splinecore::Figure::Segment("
  "splinecore::Figure::SplineLength(int)" "splinecore::FigureError::FigureError("
  "splinecore::Version()" "splinecore::LayoutFingerprint()"
  "splinecore::ReadFigureFile(" "splinecore::WriteFigureFile")

# Internal operations and inline helpers must stay private.
set(forbidden
  "ApplyDelta" "TurnToward" "SubdivideBezier" "RefreshMuscleHookRun" "TouchHookRun" "ReverseHookRun"
  "InitFDSteps" "CubicToPoly" "InitColumn" "PositionDirectionInSegment" "SnapS" "IsSmooth" "OnConverted"
  "CheckModelGeneration" "FindCarrier")

set(missing "")
foreach(name IN LISTS required)
  string(FIND "${symbols}" "${name}" at)
  if(at EQUAL -1)
    list(APPEND missing "${name}")
  endif()
endforeach()
set(leaked "")
foreach(name IN LISTS forbidden)
  string(FIND "${symbols}" "${name}" at)
  if(NOT at EQUAL -1)
    list(APPEND leaked "${name}")
  endif()
endforeach()
list(LENGTH required required_count)
if(missing OR leaked)
  string(REPLACE ";" "\n  " missing "${missing}")
  string(REPLACE ";" "\n  " leaked "${leaked}")
  message(FATAL_ERROR "export check failed\nmissing:\n  ${missing}\nexported but internal:\n  ${leaked}")
endif()
message(STATUS "all ${required_count} public operations exported, no internal one")
