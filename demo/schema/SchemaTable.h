// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace tidewright::demo {

// Fields of the public Kubernetes API types, v1 generation, in the notation of FieldType; "!" marks a
// required field and "Name=" starts a type. Fields that are rare in manifests hold "any".
inline constexpr std::string_view schemaTable = R"(
Pod= apiVersion:s kind:s metadata:ObjectMeta spec:PodSpec! status:any
Service= apiVersion:s kind:s metadata:ObjectMeta spec:ServiceSpec! status:any
Endpoints= apiVersion:s kind:s metadata:ObjectMeta subsets:[EndpointSubset]
ConfigMap= apiVersion:s kind:s metadata:ObjectMeta data:{s} binaryData:{s} immutable:b
Secret= apiVersion:s kind:s metadata:ObjectMeta data:{s} stringData:{s} type:s immutable:b
ServiceAccount= apiVersion:s kind:s metadata:ObjectMeta secrets:[ObjectReference] imagePullSecrets:[LocalObjectReference]
    automountServiceAccountToken:b
Event= apiVersion:s kind:s metadata:ObjectMeta! involvedObject:ObjectReference! reason:s message:s type:s count:i
    firstTimestamp:s lastTimestamp:s eventTime:s source:any action:s related:any reportingComponent:s
    reportingInstance:s series:any
PersistentVolumeClaim= apiVersion:s kind:s metadata:ObjectMeta spec:ClaimSpec! status:any
PersistentVolume= apiVersion:s kind:s metadata:ObjectMeta spec:VolumeSpec! status:any
Namespace= apiVersion:s kind:s metadata:ObjectMeta spec:NamespaceSpec status:any
Node= apiVersion:s kind:s metadata:ObjectMeta spec:any status:any
Deployment= apiVersion:s kind:s metadata:ObjectMeta spec:DeploymentSpec! status:any
ReplicaSet= apiVersion:s kind:s metadata:ObjectMeta spec:ReplicaSetSpec! status:any
DaemonSet= apiVersion:s kind:s metadata:ObjectMeta spec:DaemonSetSpec! status:any
StatefulSet= apiVersion:s kind:s metadata:ObjectMeta spec:StatefulSetSpec! status:any
Job= apiVersion:s kind:s metadata:ObjectMeta spec:JobSpec! status:any
CronJob= apiVersion:s kind:s metadata:ObjectMeta spec:CronJobSpec! status:any
HorizontalPodAutoscaler= apiVersion:s kind:s metadata:ObjectMeta spec:ScalerSpec! status:any
ControllerRevision= apiVersion:s kind:s metadata:ObjectMeta data:any revision:i!
Ingress= apiVersion:s kind:s metadata:ObjectMeta spec:IngressSpec! status:any
NetworkPolicy= apiVersion:s kind:s metadata:ObjectMeta spec:PolicySpec! status:any
StorageClass= apiVersion:s kind:s metadata:ObjectMeta provisioner:s! parameters:{s} reclaimPolicy:s mountOptions:[s]
    allowVolumeExpansion:b volumeBindingMode:s allowedTopologies:any
CustomResourceDefinition= apiVersion:s kind:s metadata:ObjectMeta spec:DefinitionSpec! status:any
Role= apiVersion:s kind:s metadata:ObjectMeta rules:[PolicyRule]
RoleBinding= apiVersion:s kind:s metadata:ObjectMeta subjects:[Subject] roleRef:RoleRef!
ClusterRole= apiVersion:s kind:s metadata:ObjectMeta rules:[PolicyRule] aggregationRule:any
ClusterRoleBinding= apiVersion:s kind:s metadata:ObjectMeta subjects:[Subject] roleRef:RoleRef!

ObjectMeta= name:s generateName:s namespace:s selfLink:s uid:s resourceVersion:s generation:i creationTimestamp:s
    deletionTimestamp:s deletionGracePeriodSeconds:i labels:{s} annotations:{s} ownerReferences:[OwnerReference]
    finalizers:[s] clusterName:s managedFields:any
OwnerReference= apiVersion:s! kind:s! name:s! uid:s! controller:b blockOwnerDeletion:b
ObjectReference= apiVersion:s kind:s name:s namespace:s uid:s resourceVersion:s fieldPath:s
LocalObjectReference= name:s
LabelSelector= matchLabels:{s} matchExpressions:[SelectorRequirement]
SelectorRequirement= key:s! operator:s! values:[s]
NamespaceSpec= finalizers:[s]

PodTemplateSpec= metadata:ObjectMeta spec:PodSpec
PodSpec= containers:[Container]! initContainers:[Container] ephemeralContainers:any volumes:[Volume] restartPolicy:s
    terminationGracePeriodSeconds:i activeDeadlineSeconds:i dnsPolicy:s dnsConfig:any nodeSelector:{s}
    serviceAccountName:s serviceAccount:s automountServiceAccountToken:b nodeName:s hostNetwork:b hostPID:b hostIPC:b
    hostUsers:b shareProcessNamespace:b securityContext:any imagePullSecrets:[LocalObjectReference] hostname:s
    subdomain:s affinity:any schedulerName:s tolerations:any hostAliases:any priorityClassName:s priority:i
    preemptionPolicy:s readinessGates:any runtimeClassName:s enableServiceLinks:b overhead:{q}
    topologySpreadConstraints:any setHostnameAsFQDN:b os:any schedulingGates:any resourceClaims:any resources:any
Container= name:s! image:s imagePullPolicy:s command:[s] args:[s] workingDir:s ports:[ContainerPort] env:[EnvVar]
    envFrom:any resources:ResourceRequirements volumeMounts:[VolumeMount] volumeDevices:any livenessProbe:Probe
    readinessProbe:Probe startupProbe:Probe lifecycle:any terminationMessagePath:s terminationMessagePolicy:s
    securityContext:any stdin:b stdinOnce:b tty:b restartPolicy:s resizePolicy:any
ContainerPort= name:s containerPort:i! hostPort:i hostIP:s protocol:s
EnvVar= name:s! value:s valueFrom:any
ResourceRequirements= limits:{q} requests:{q} claims:any
VolumeMount= name:s! mountPath:s! readOnly:b subPath:s subPathExpr:s mountPropagation:s recursiveReadOnly:s
Probe= exec:any httpGet:any tcpSocket:any grpc:any initialDelaySeconds:i timeoutSeconds:i periodSeconds:i
    successThreshold:i failureThreshold:i terminationGracePeriodSeconds:i
Volume= name:s! emptyDir:any configMap:any secret:any hostPath:any persistentVolumeClaim:any projected:any
    downwardAPI:any nfs:any csi:any ephemeral:any image:any iscsi:any fc:any cephfs:any rbd:any gitRepo:any
    glusterfs:any flexVolume:any cinder:any flocker:any azureFile:any azureDisk:any awsElasticBlockStore:any
    gcePersistentDisk:any vsphereVolume:any quobyte:any photonPersistentDisk:any portworxVolume:any scaleIO:any
    storageos:any

DeploymentSpec= replicas:i selector:LabelSelector! template:PodTemplateSpec! strategy:any minReadySeconds:i
    revisionHistoryLimit:i paused:b progressDeadlineSeconds:i
ReplicaSetSpec= replicas:i selector:LabelSelector! template:PodTemplateSpec minReadySeconds:i
DaemonSetSpec= selector:LabelSelector! template:PodTemplateSpec! updateStrategy:any minReadySeconds:i
    revisionHistoryLimit:i
StatefulSetSpec= replicas:i selector:LabelSelector! template:PodTemplateSpec! serviceName:s volumeClaimTemplates:any
    podManagementPolicy:s updateStrategy:any revisionHistoryLimit:i minReadySeconds:i
    persistentVolumeClaimRetentionPolicy:any ordinals:any
JobSpec= template:PodTemplateSpec! completions:i parallelism:i backoffLimit:i activeDeadlineSeconds:i
    ttlSecondsAfterFinished:i selector:LabelSelector manualSelector:b completionMode:s suspend:b podFailurePolicy:any
    podReplacementPolicy:s backoffLimitPerIndex:i maxFailedIndexes:i managedBy:s successPolicy:any
JobTemplateSpec= metadata:ObjectMeta spec:JobSpec
CronJobSpec= schedule:s! jobTemplate:JobTemplateSpec! suspend:b concurrencyPolicy:s startingDeadlineSeconds:i
    successfulJobsHistoryLimit:i failedJobsHistoryLimit:i timeZone:s

ServiceSpec= type:s selector:{s} ports:[ServicePort] clusterIP:s clusterIPs:[s] externalIPs:[s] externalName:s
    externalTrafficPolicy:s internalTrafficPolicy:s sessionAffinity:s sessionAffinityConfig:any loadBalancerIP:s
    loadBalancerSourceRanges:[s] loadBalancerClass:s healthCheckNodePort:i publishNotReadyAddresses:b ipFamilies:[s]
    ipFamilyPolicy:s allocateLoadBalancerNodePorts:b trafficDistribution:s topologyKeys:[s] ipFamily:s
ServicePort= name:s port:i! targetPort:q nodePort:i protocol:s appProtocol:s
EndpointSubset= addresses:[EndpointAddress] notReadyAddresses:[EndpointAddress] ports:[EndpointPort]
EndpointAddress= ip:s! hostname:s nodeName:s targetRef:ObjectReference
EndpointPort= name:s port:i! protocol:s appProtocol:s

ClaimSpec= accessModes:[s] resources:ResourceRequirements storageClassName:s volumeName:s volumeMode:s
    selector:LabelSelector dataSource:any dataSourceRef:any volumeAttributesClassName:s
VolumeSpec= capacity:{q} accessModes:[s] persistentVolumeReclaimPolicy:s storageClassName:s claimRef:ObjectReference
    volumeMode:s mountOptions:[s] nodeAffinity:any volumeAttributesClassName:s hostPath:any nfs:any csi:any local:any
    iscsi:any fc:any cephfs:any rbd:any glusterfs:any cinder:any flexVolume:any flocker:any azureFile:any
    azureDisk:any awsElasticBlockStore:any gcePersistentDisk:any vsphereVolume:any quobyte:any photonPersistentDisk:any
    portworxVolume:any scaleIO:any storageos:any

ScalerSpec= scaleTargetRef:any! minReplicas:i maxReplicas:i! metrics:[any] behavior:any
    targetCPUUtilizationPercentage:i
IngressSpec= ingressClassName:s defaultBackend:any tls:[any] rules:[any]
PolicySpec= podSelector:LabelSelector policyTypes:[s] ingress:[any] egress:[any]
DefinitionSpec= group:s! names:DefinitionNames! scope:s! versions:[any]! conversion:any preserveUnknownFields:b
DefinitionNames= plural:s! singular:s shortNames:[s] kind:s! listKind:s categories:[s]

PolicyRule= verbs:[s]! apiGroups:[s] resources:[s] resourceNames:[s] nonResourceURLs:[s]
Subject= kind:s! name:s! apiGroup:s namespace:s
RoleRef= apiGroup:s! kind:s! name:s!
)";

} // namespace tidewright::demo
