#!/bin/sh
# How often each kind of event happened in the namespace, warnings first. Only reads, a page at a time, so it may
# run while nodes are drained.
if [ "$NAMESPACE" = "All Namespaces" ]; then
    where=--all-namespaces
else
    where=--namespace=$NAMESPACE
fi
# Fields stand apart by tabs; what an event lacks is shown as a dash.
"$KUBECTL" get events --context="$CONTEXT" "$where" --chunk-size=200 --output=go-template='{{range .items}}{{
    or .type "-"}}{{"\t"}}{{or .reason "-"}}{{"\t"}}{{or .involvedObject.kind "-"}}{{"\t"}}{{or .count 1}}
{{end}}' |
    awk -F '\t' 'NF == 4 { count[$1 FS $2 FS $3] += $4 }
        END {
            for (kind in count) { split(kind, word, FS); printf "%-8s %6d  %s (%s)\n", word[1], count[kind], word[2], word[3] }
        }' |
    sort -k1,1r -k2,2nr
