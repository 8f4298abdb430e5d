#compdef murlreport
_arguments -s \
  '(- *)'{-h,--help}'[help]' \
  '(- *)'{-V,--version}'[version]' \
  '--csv=[write the items as CSV]:file:_files -F "(*.[mM][rR][lLpP])"' \
  '--json=[write the report as JSON]:file:_files -F "(*.[mM][rR][lLpP])"' \
  '--html=[write the report as a page]:file:_files -F "(*.[mM][rR][lLpP])"' \
  '--sarif=[write the items as SARIF 2.1.0]:file:_files -F "(*.[mM][rR][lLpP])"' \
  '--open[show the report in the browser]' \
  '--quiet[no text on standard output]' \
  '*--kind=[only items of these kinds]:kind:_values -s , kind stopped broken guarded frozen decoded lost gone byhand check form quiet unknown base dropped' \
  '*--command=[only items of these commands]:command: ' \
  '--summary[leave the items out of the text]' \
  '--all[list the items that the text sums up]' \
  '--accept[accept the open items that --kind, --command or FILE:LINE select]' \
  '--reason=[with --accept: why]:text: ' \
  '--accept-from=[accept the items that were ticked in the page]:file:_files' \
  '--prune[forget what was accepted or remembered of what is gone]' \
  '--adopt[say that the outputs have all that is written now]' \
  '--one-run[carry the SET COLLECT state from script to script]' \
  '--convert[convert what has changed; edited outputs are merged]' \
  '--force[with --convert replace any output, with --adopt refuse none]' \
  '*:script or folder:_files -g "(#i)*.mr[lp]"'
