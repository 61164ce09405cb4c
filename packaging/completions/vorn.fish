# Completion of vorn for fish.
complete -c vorn -f
complete -c vorn -n __fish_use_subcommand -a adjust -d "adjust a network and report the results"
complete -c vorn -n __fish_use_subcommand -a check -d "say what its adjustment would be"
complete -c vorn -n __fish_use_subcommand -a import -d "make a network file of a file of another program"
complete -c vorn -n __fish_use_subcommand -a export -d "write a network for another program"
complete -c vorn -n __fish_use_subcommand -a compare -d "test which points moved between epochs"
complete -c vorn -n __fish_use_subcommand -a control -d "test which control points do not fit"
complete -c vorn -n __fish_use_subcommand -a transform -d "fit one list of coordinates to another"
complete -c vorn -n __fish_use_subcommand -a plan -d "what a planned network is worth"
complete -c vorn -n __fish_use_subcommand -l version -d "show the version"
complete -c vorn -s h -l help -d "show a help text"

set -l commands __fish_seen_subcommand_from adjust check
complete -c vorn -n "$commands" -a "(__fish_complete_suffix .inp)"
complete -c vorn -n "$commands" -s C -x -a "(__fish_complete_directories)" -d "work in this folder"
complete -c vorn -n "$commands" -l solver -x -a "sparse compact jordan simplex" -d "solver, instead of that of the file"
complete -c vorn -n "$commands" -l mode -x -a "statistics solution propagation" -d "mode, instead of that of the file"

set -l adjust __fish_seen_subcommand_from adjust
complete -c vorn -n "$adjust" -s o -r -F -d "report in this file"
complete -c vorn -n "$adjust" -l json -r -F -d "results as JSON in this file"
complete -c vorn -n "$adjust" -l html -r -F -d "results as a page for a browser"
complete -c vorn -n "$adjust" -l geojson -r -F -d "the plan as a map"
complete -c vorn -n "$adjust" -l kml -r -F -d "the plan for globes"
complete -c vorn -n "$adjust" -l dxf -r -F -d "the plan as a drawing in DXF"
complete -c vorn -n "$adjust" -l svg -r -F -d "the plan as a drawing for papers"
complete -c vorn -n "$adjust" -l update -r -F -d "the network file with adjusted coordinates"
complete -c vorn -n "$adjust" -l axes -x -a "yx xy" -d "of maps and drawings, to the right and upwards"
complete -c vorn -n "$adjust" -l csv -x -a "(__fish_complete_directories)" -d "results as tables in this folder"
complete -c vorn -n "$adjust" -l brief -d "no line for every observation in the report"
complete -c vorn -n "$adjust" -l no-residual-statistics -d "no redundancy numbers and tests of residuals"
complete -c vorn -n "$adjust" -l snoop -d "leave out what is suspicious, step by step"
complete -c vorn -n "$adjust" -l left-out -r -d "what snooping leaves out, as a table"
complete -c vorn -n "$adjust" -l covariance -r -d "covariances of points, in a file"
complete -c vorn -n "$adjust" -l robust -x -a "huber danish l1" -d "weights that fall with the residuals"
complete -c vorn -n "$adjust" -l fail-on -x -a "test suspects unchecked" -d "exit status 4 where these fail"
complete -c vorn -n "$adjust" -l components -x -a "propose use" -d "variance components"
complete -c vorn -n "$adjust" -l threads -x -d "threads of the solver sparse"
complete -c vorn -n "$adjust" -l memory -x -d "memory for factor and inverse, beyond it a file"
complete -c vorn -n "$adjust" -l times -d "how long the steps took"
complete -c vorn -n "$adjust" -l recompute -d "compute new approximate values"
complete -c vorn -n "$adjust" -l balance -d "balance the observations"
complete -c vorn -n "$adjust" -l ask -d "ask on the terminal instead of answering no"
complete -c vorn -n "$adjust" -l quiet -d "only errors on standard error"

complete -c vorn -n "__fish_seen_subcommand_from check" -l json -r -F -d "faults or verdict as JSON in this file"

set -l import __fish_seen_subcommand_from import
complete -c vorn -n "$import" -F
complete -c vorn -n "$import" -s o -r -F -d "network file"

set -l foreign "__fish_seen_subcommand_from adjust check import"
complete -c vorn -n "$foreign" -l from -x -a "gkf dynadjust dynaml sinex gvx lines gsi sdr m5 jobxml landxml csv json" -d "format of a file of another program"
complete -c vorn -n "$foreign" -l sets -x -a "mean keep" -d "sets of a field book"
complete -c vorn -n "$foreign" -l sigma -x -d "standard deviation where the file gives none, KEY=VALUE"
complete -c vorn -n "$foreign" -l station -x -d "where the sights before any set-up were taken"
complete -c vorn -n "$foreign" -l station-code -x -d "GSI: code of the blocks that open a set-up"
complete -c vorn -n "$foreign" -l points -r -F -d "file with coordinates of points"
complete -c vorn -n "$foreign" -l fix -x -d "points that are held"
complete -c vorn -n "$foreign" -l datum -x -d "points that alone hold a free network"
complete -c vorn -n "$foreign" -l geoid -rF -d "DynAdjust: height of the geoid, a grid file or metres"
complete -c vorn -n "$import" -l force -d "replace the network file where there is one"
complete -c vorn -n "$import" -l quiet -d "only errors on standard error"

set -l export __fish_seen_subcommand_from export
complete -c vorn -n "$export" -a "(__fish_complete_suffix .inp)"
complete -c vorn -n "$export" -s o -r -F -d "file to write"
complete -c vorn -n "$export" -l to -x -a "gkf lines dynaml json sinex landxml points" -d "format"
complete -c vorn -n "$export" -l force -d "replace the file where there is one"
complete -c vorn -n "$export" -l quiet -d "only errors on standard error"
set -l files __fish_seen_subcommand_from compare control plan
complete -c vorn -n "$files" -a "(__fish_complete_suffix .inp)"
complete -c vorn -n "__fish_seen_subcommand_from transform" -F
set -l reported __fish_seen_subcommand_from compare control transform plan
complete -c vorn -n "$reported" -s o -r -F -d "report in this file"
complete -c vorn -n "$reported" -l json -r -F -d "results as JSON in this file"
complete -c vorn -n "$reported" -s C -x -a "(__fish_complete_directories)" -d "work in this folder"
complete -c vorn -n "$reported" -l quiet -d "only errors on standard error"
set -l tested __fish_seen_subcommand_from compare control transform
complete -c vorn -n "$tested" -l level -x -d "probability of a false alarm of each test"
complete -c vorn -n "$tested" -l apriori -d "variance factor 1"
complete -c vorn -n "__fish_seen_subcommand_from compare control" -l html -r -F -d "page for a browser"
complete -c vorn -n "__fish_seen_subcommand_from compare" -l held -d "held coordinates stay held"
complete -c vorn -n "__fish_seen_subcommand_from compare" -l points -x -d "compare these points alone"
complete -c vorn -n "__fish_seen_subcommand_from compare" -l strain -x -d "strain of the group of these points"
complete -c vorn -n "__fish_seen_subcommand_from compare" -l dates -x -d "of the epochs"
set -l transform __fish_seen_subcommand_from transform
complete -c vorn -n "$transform" -l parameters -x -a "3 4 6 7" -d "of the transformation"
complete -c vorn -n "$transform" -l no-scale -d "the scale is 1"
complete -c vorn -n "$transform" -l list -r -F -d "all points of A in the system of B"
complete -c vorn -n "__fish_seen_subcommand_from plan" -l help-point -x -d "the point to help"
complete -c vorn -n "__fish_seen_subcommand_from plan" -l candidates -r -F -d "observations that might be added"
