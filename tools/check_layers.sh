#!/usr/bin/env bash
# Includes point down the layers, as docs/architecture.md draws them: prints those that do not and
# fails when there are any. Third-party headers that clients must not need are let into no header.
set -euo pipefail
cd "$(dirname "$0")/.."

# layer: what it may include
layers() {
  cat <<'END'
platform/system: platform/system
platform/math: platform/math platform/system
platform/opt: platform/opt platform/system
platform/chem: platform/chem platform/system
platform/likeness: platform/likeness platform/chem platform/system
platform/depict: platform/depict platform/chem platform/system
stats: stats platform/math platform/opt platform/chem platform/likeness platform/depict platform/system
apps: apps stats platform/math platform/chem platform/likeness platform/depict platform/system
END
}

status=0
while IFS=: read -r layer allowed; do
  pattern="#include \"($(echo $allowed | tr ' ' '|'))/"
  if git ls-files "$layer" | grep -E '\.(h|cpp)$' | xargs grep -nHE '#include "' | grep -vE "$pattern"; then
    echo "$layer includes only: $allowed"
    status=1
  fi
done < <(layers)

if git ls-files 'platform/*.h' 'stats/api/*.h' | grep -v /internal/ |
  xargs grep -nHE '#include <(boost|GraphMol|RDGeneral|cairo|DataStructs)'; then
  echo "no public header includes these"
  status=1
fi
[ $status -eq 0 ] && echo "includes point down"
exit $status
