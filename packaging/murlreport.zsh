#compdef murlreport
_arguments -s \
  '(- *)'{-h,--help}'[help]' \
  '(- *)'{-V,--version}'[version]' \
  '--csv=[write the items as CSV]:file:_files -g "^(#i)*.mr[lp]"' \
  '--json=[write the report as JSON]:file:_files -g "^(#i)*.mr[lp]"' \
  '--html=[write the report as a page]:file:_files -g "^(#i)*.mr[lp]"' \
  '--quiet[no text on standard output]' \
  '*--kind=[only items of these kinds]:kind:_values -s , kind stopped broken guarded frozen lost gone byhand check quiet unknown base dropped' \
  '*--command=[only items of these commands]:command: ' \
  '--summary[leave the items out of the text]' \
  '--all[list the items that the text sums up by file]' \
  '--one-run[carry the SET COLLECT state from script to script]' \
  '--convert[write each X_conv; one that was edited is kept]' \
  '--force[with --convert: replace those too]' \
  '*:script or folder:_files -g "(#i)*.mr[lp]"'
