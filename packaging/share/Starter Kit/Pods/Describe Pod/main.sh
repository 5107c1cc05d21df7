#!/bin/sh
# Describes the chosen pod, its latest events first: the console shows the beginning, and Copy Entry gives all.
told=$("$KUBECTL" describe "pod/$POD" --context="$CONTEXT" --namespace="$NAMESPACE") || exit
printf '%s\n' "$told" | sed -n '/^Events:/,$p'
printf '%s\n' "$told" | sed '/^Events:/,$d'
