#!/bin/sh
# Shows the values of the chosen secret. In a terminal, so that they stay out of the console's history.
trap 'exit 1' INT TERM
trap 'printf "\033[H\033[2J\033[3J"' EXIT # clears the screen, with what has scrolled away
if "$KUBECTL" get "secret/$SECRET" --context="$CONTEXT" --namespace="$NAMESPACE" --output=go-template='{{
        range $key, $value := .data}}{{$key}}: {{$value | base64decode}}
{{end}}'
then
    echo "Press Return to clear the screen."
    read -r _
else
    trap - EXIT # what kubectl says stays
fi
