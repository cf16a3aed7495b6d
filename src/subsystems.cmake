# The library's files by subsystem, in dependency order: each subsystem may
# include the public headers and the subsystems it USES, all declared above
# it (cmake/Subsystems.cmake checks every include).
#
#   host, measure                       (public headers only)
#   controlpoint                        records, walks, position cache, spaces
#   tangents, hooks   -> controlpoint
#   convert           -> controlpoint, tangents
#   groups            -> controlpoint, hooks
#   figure            -> controlpoint, hooks, measure, convert

splinecore_subsystem(host FILES
  layout_checks.cpp version.cpp)

splinecore_subsystem(measure FILES
  arc_length.cpp evaluate.cpp
  batch_length.cpp batch_length.h batch_length_avx2.cpp chord_lanes.h
  forward_difference.cpp forward_difference.h
  position_in_segment.cpp position_in_segment.h
  view_cubic.cpp view_cubic.h)

splinecore_subsystem(controlpoint FILES
  checked.cpp checked.h
  position_cache.cpp position_cache.h
  segment_cp.cpp spline_links.cpp validate_figure.cpp
  spaces.h walks.h)

splinecore_subsystem(tangents USES controlpoint FILES
  get_tangents.cpp tangent_rule.h
  tangent_cache.cpp
  hook_partners.cpp hook_partners.h)

splinecore_subsystem(hooks USES controlpoint FILES
  hook_range.cpp hook_segment_cp.cpp
  subdivide_bezier.cpp subdivide_bezier.h
  snap.h)

splinecore_subsystem(convert USES controlpoint tangents FILES
  apply_delta.h convert.cpp hook_tangent.h
  whole_refresh.cpp whole_refresh.h)

splinecore_subsystem(groups USES controlpoint hooks FILES
  group_edit.cpp group_edit.h
  group_list.cpp
  reverse_hook_run.cpp reverse_hook_run.h
  slices.cpp)

splinecore_subsystem(figure USES controlpoint hooks measure convert FILES
  figure.cpp figure_file.cpp
  refresh_all.cpp refresh_all.h shares.h
  invert.cpp invert.h
  reach.cpp reach.h)

splinecore_check_all_listed()
