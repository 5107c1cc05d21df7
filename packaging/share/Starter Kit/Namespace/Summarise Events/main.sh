#!/bin/sh
# How often each kind of event happened in the namespace, warnings first. Only reads, a page at a time, so it may
# run while nodes are drained.
if [ "$NAMESPACE" = "All Namespaces" ]; then
    where=--all-namespaces
else
    where=--namespace=$NAMESPACE
fi
"$KUBECTL" get events --context="$CONTEXT" "$where" --chunk-size=200 --output=go-template='{{range .items}}{{
    .type}} {{.reason}} {{.involvedObject.kind}} {{with .count}}{{.}}{{else}}1{{end}}
{{end}}' |
    awk 'NF == 4 { count[$1 " " $2 " " $3] += $4 }
        END {
            for (kind in count) { split(kind, word, " "); printf "%-8s %6d  %s (%s)\n", word[1], count[kind], word[2], word[3] }
        }' |
    sort -k1,1r -k2,2nr
